// SPDX-License-Identifier: GPL-3.0-or-later
// The MIDI endpoints of the system.
#pragma once

#include "kits/application/Messenger.h"
#include "kits/midi/MidiLocalConsumer.h"
#include "kits/support/Result.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// A watcher is sent a message of this code when endpoints have come or gone.
constexpr uint32 B_MIDI_EVENT = FourCC("MIDI");

namespace kits {
class MidiSystems;
}

/// A source of another program. Whoever gets one from the roster releases it. Window thread.
class BMidiProducer : public BMidiEndpoint {
  public:
    /// Returns the source's number, which stays the same while the source is there and is never
    /// given to another.
    int32 ID() const { return id; }

    /// Connects the source to a registered consumer, or undoes it. B_WOULD_BLOCK where it cannot be
    /// connected yet: a B_MIDI_EVENT will tell when to try again.
    status_t Connect(BMidiLocalConsumer* consumer);
    status_t Disconnect(BMidiLocalConsumer* consumer);

    /// Gives the object back, which is deleted.
    void Release();

  private:
    friend class BMidiRoster;
    BMidiProducer(std::string name, int32 id) : BMidiEndpoint(std::move(name)), id(id) {}
    ~BMidiProducer() override = default;

    int32 id;
};

/// The sources that JACK and the ALSA sequencer show, whichever of the two there is.
class BMidiRoster {
  public:
    /// Returns the roster, or null while there is no MIDI system; `reason` then says why. Window
    /// thread.
    static BMidiRoster* MidiRoster(std::string* reason = nullptr);

    /// Sends a B_MIDI_EVENT whenever sources have come or gone, be it with their system, until the
    /// target goes.
    void StartWatching(const BMessenger& messenger);

    /// The producer with the lowest id above *id, which becomes its id; null after the last.
    BMidiProducer* NextProducer(int32* id);
    /// Returns the source of that number, or null if there is none. The caller releases it.
    BMidiProducer* FindProducer(int32 id);
    /// Returns the source of that name or, where there is none, the first that differs from it by
    /// nothing but ALSA's address at the end; null if there is neither. The caller releases it.
    BMidiProducer* FindProducer(const std::string& name);

  private:
    explicit BMidiRoster(std::shared_ptr<kits::MidiSystems> systems)
        : systems(std::move(systems)) {}

    std::shared_ptr<kits::MidiSystems> systems;
};
