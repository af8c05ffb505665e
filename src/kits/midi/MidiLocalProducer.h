// SPDX-License-Identifier: GPL-3.0-or-later
// A source of MIDI in this program, such as the computer's keyboard.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"

#include <initializer_list>

/// A source that, while registered, is listed in the roster among the sources of other programs and
/// can be connected to the consumers of this one. Window thread.
class BMidiLocalProducer : public BMidiEndpoint {
  public:
    explicit BMidiLocalProducer(std::string name);
    /// Removes the source, as Unregister does.
    ~BMidiLocalProducer() override;

    /// Makes the source known. It must be called before the roster is first used.
    status_t Register();
    /// Replaces Register for a source that no roster lists and that is always connected, such as
    /// what the program plays by itself.
    status_t RegisterAsOwn();
    status_t Unregister();

    /// Send an event to all connected consumers. Channels are 0..15, data bytes 0..127; the event
    /// takes effect at once.
    void SprayNoteOn(uchar channel, uchar note, uchar velocity) const;
    void SprayNoteOff(uchar channel, uchar note, uchar velocity) const;
    void SprayControlChange(uchar channel, uchar controller, uchar value) const;
    /// The centre is 8192: `msb` 64, `lsb` 0.
    void SprayPitchBend(uchar channel, uchar lsb, uchar msb) const;

  private:
    void Spray(std::initializer_list<uint8> bytes) const;
};
