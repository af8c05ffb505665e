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

/// The code of the message that a watcher is sent when endpoints have come or gone.
constexpr uint32 B_MIDI_EVENT = FourCC("MIDI");

namespace kits {
class MidiSystems;
}

/// A source of another program. The caller that gets one from the roster releases it. Window
/// thread.
class BMidiProducer : public BMidiEndpoint {
  public:
    /// Returns the source's number, which stays the same while the source exists and is never given
    /// to another.
    int32 ID() const { return id; }

    /// Connects the source to a registered consumer, or disconnects it. Returns B_WOULD_BLOCK if it
    /// cannot be connected yet: a B_MIDI_EVENT then says when to try again.
    status_t Connect(BMidiLocalConsumer* consumer);
    status_t Disconnect(BMidiLocalConsumer* consumer);

    /// Deletes the object.
    void Release();

  private:
    friend class BMidiRoster;
    BMidiProducer(std::string name, int32 id) : BMidiEndpoint(std::move(name)), id(id) {}
    ~BMidiProducer() override = default;

    int32 id;
};

/// The sources that JACK and the ALSA sequencer show, as far as these exist, and this program's
/// own.
class BMidiRoster {
  public:
    /// Returns the roster, or null while there is no MIDI system; `reason` then says why. Window
    /// thread.
    static BMidiRoster* MidiRoster(std::string* reason = nullptr);

    /// Sends a B_MIDI_EVENT whenever sources have come or gone, also together with their system,
    /// until the target is destroyed.
    void StartWatching(const BMessenger& messenger);

    /// Returns the producer with the lowest id above *id and sets *id to that; null after the last.
    BMidiProducer* NextProducer(int32* id);
    /// Returns the source with that number, or null if there is none. The caller releases it.
    BMidiProducer* FindProducer(int32 id);
    /// Returns the source with that name or, if there is none, the first whose name differs only in
    /// ALSA's address at the end; null if there is neither. The caller releases it.
    BMidiProducer* FindProducer(const std::string& name);

  private:
    explicit BMidiRoster(std::shared_ptr<kits::MidiSystems> systems)
        : systems(std::move(systems)) {}

    std::shared_ptr<kits::MidiSystems> systems;
};
