// SPDX-License-Identifier: GPL-3.0-or-later
// The source of what the user plays in the window.
#pragma once

#include "kits/midi/MidiLocalProducer.h"

#include <functional>

namespace vexa {

/// A source of MIDI events that the user plays in the window, by mouse or keyboard. Window thread.
class HandSource {
  public:
    /// A source is either in the MIDI roster, where the user can choose it, or always connected.
    enum class Place { Roster, AlwaysHeard };
    HandSource(const char* name, Place place) : producer(name) {
        if (place == Place::Roster)
            producer.Register();
        else
            producer.RegisterAsOwn();
    }

    /// Takes an event: the status byte with its channel, and two data bytes.
    using Player = std::function<void(uint8 status, uint8 first, uint8 second)>;
    /// Passes all events to `next` from now on, instead of to the consumers that have connected the
    /// source.
    void SendTo(Player next) { player = std::move(next); }
    /// Sets the channel of the coming events, 0..15. It is 0 at first.
    void SetChannel(uchar next) { channel = next; }
    uchar Channel() const { return channel; }

    void NoteOn(uchar note, uchar velocity) const { Send(0x90, note, velocity); }
    void NoteOff(uchar note, uchar velocity) const { Send(0x80, note, velocity); }
    void ControlChange(uchar number, uchar value) const { Send(0xB0, number, value); }
    /// Sends a pitch bend, 0..16383; 8192 is the middle.
    void PitchBend(int value) const { Send(0xE0, uchar(value & 0x7F), uchar(value >> 7)); }

  private:
    void Send(uint8 kind, uchar first, uchar second) const;

    BMidiLocalProducer producer;
    Player player;
    uchar channel = 0;
};

} // namespace vexa
