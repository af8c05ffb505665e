// SPDX-License-Identifier: GPL-3.0-or-later
// By program changes a player chooses sounds.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/midi/EventGate.h"
#include "midi/MidiConsumer.h"

#include <array>
#include <atomic>
#include <optional>

namespace vexa {

/// Hears of program changes as soon as they come, whenever the notes around them are played, and
/// wakes who loads sounds.
class ProgramSelector : public kits::EventWatcher {
  public:
    /// Only what comes on a channel that the consumer listens to counts. `target` gets a message of
    /// that code after each program change. Window thread.
    ProgramSelector(const VexaMidiConsumer& consumer, BMessenger target, uint32 code)
        : consumer(consumer), target(std::move(target)), code(code) {}

    /// Takes a program change up. MIDI thread.
    void Came(const kits::MidiEvent& event) override;

    /// Returns the last program that was chosen since the call before: 128 bank + program, where
    /// the bank is 128 times controller 0 plus controller 32. Any thread.
    std::optional<int32> Take();

  private:
    struct Bank {
        int32 msb = 0, lsb = 0;
    };

    static constexpr int32 kNone = -1;

    const VexaMidiConsumer& consumer;
    const BMessenger target;
    const uint32 code;
    std::array<Bank, 16> banks{};
    std::atomic<int32> chosen{kNone};
};

} // namespace vexa
