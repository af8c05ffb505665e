// SPDX-License-Identifier: GPL-3.0-or-later
// Turns the bytes of a MIDI connection into calls of a consumer's hooks.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"

#include <array>
#include <bitset>
#include <span>
#include <vector>

namespace kits {

/// Decodes one source's stream of bytes, in pieces of any length, by the MIDI 1.0 standard: running
/// status, real-time bytes inside of other messages, system exclusive data of up to kLongestSysex
/// bytes (longer ones are passed over). A note-on with velocity 0 is a NoteOff; the controllers 120
/// and 123 to 127 are AllNotesOff. Data that belong to no status, undefined statuses and messages
/// that are cut short call nothing. MIDI thread.
class WireDecoder {
  public:
    static constexpr std::size_t kLongestSysex = 65536;

    explicit WireDecoder(BMidiLocalConsumer& consumer) : consumer(consumer) {
        // Reserved at once, so that notes still play if memory runs out later.
        sysex.reserve(kLongestSysex);
    }

    void Decode(std::span<const uint8> bytes, bigtime_t time);

    /// Calls NoteOff for the notes of this stream that are on, and SourceEnded for the channels
    /// whose wheel or pedals it has moved.
    void EndNotes(bigtime_t time);

    /// Discards what is unfinished but system exclusive data, and the running status: what follows
    /// begins with a status, or goes on with those data.
    void BeginMessage();

    /// Discards the unfinished message and the running status: part of the stream is missing.
    void Reset() { status = 0; }

  private:
    void Status(uint8 status, bigtime_t time);
    void Data(uint8 data, bigtime_t time);
    void ChannelMessage(bigtime_t time);
    void EndSysex(bigtime_t time);

    BMidiLocalConsumer& consumer;
    /// The status that data bytes belong to; 0 for none, 0xF0 within system exclusive data.
    uint8 status = 0;
    uint8 data[2] = {};
    int have = 0;
    int need = 0;
    /// The notes that are on, of each channel.
    std::array<std::bitset<128>, 16> held;
    /// The channels whose wheel or pedals were moved.
    std::bitset<16> moved;
    std::vector<uint8> sysex;
    bool sysexFits = true;
};

} // namespace kits
