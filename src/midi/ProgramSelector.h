// SPDX-License-Identifier: GPL-3.0-or-later
// Program changes, by which a player chooses sounds.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/midi/EventGate.h"
#include "midi/MidiConsumer.h"

#include <array>
#include <atomic>
#include <optional>

namespace vexa {

/// Receives program changes as soon as they arrive, independently of the time at which neighbouring
/// notes are played, and notifies the looper that loads sounds.
class ProgramSelector : public kits::EventWatcher {
  public:
    /// Ignores channels to which the consumer does not listen. `target` gets a message of that code
    /// after each program change. Window thread.
    ProgramSelector(const VexaMidiConsumer& consumer, BMessenger target, uint32 code)
        : consumer(consumer), target(std::move(target)), code(code) {}

    /// Handles a program change. MIDI thread.
    void Came(const kits::MidiEvent& event) override;

    /// Returns the last program chosen since the previous call: 128 bank + program, where the bank
    /// is 128 times controller 0 plus controller 32. Any thread.
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
