// SPDX-License-Identifier: GPL-3.0-or-later
// A source of MIDI in this program, such as the computer's keyboard.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"

#include <initializer_list>

/// While registered it stands in the roster among the sources of other programs, and can be
/// connected to the consumers of this one. Window thread.
class BMidiLocalProducer : public BMidiEndpoint {
  public:
    explicit BMidiLocalProducer(std::string name);
    /// Takes the source away, as if it had been unregistered.
    ~BMidiLocalProducer() override;

    /// Makes the source known. It must be called before the roster is asked for the first time.
    status_t Register();
    /// Is called in place of Register for a source that stands in no roster and is always
    /// connected, as what the program plays by itself is.
    status_t RegisterAsOwn();
    status_t Unregister();

    /// Sends to all that are connected. Channels are 0..15, data bytes 0..127; the event takes
    /// effect at once.
    void SprayNoteOn(uchar channel, uchar note, uchar velocity) const;
    void SprayNoteOff(uchar channel, uchar note, uchar velocity) const;
    void SprayControlChange(uchar channel, uchar controller, uchar value) const;
    /// 8192 is the middle: 64 * 128.
    void SprayPitchBend(uchar channel, uchar lsb, uchar msb) const;

  private:
    void Spray(std::initializer_list<uint8> bytes) const;
};
