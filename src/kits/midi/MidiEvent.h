// SPDX-License-Identifier: GPL-3.0-or-later
// Events of a synthesizer: what the channel messages of MIDI mean to a consumer.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"
#include "kits/support/RealtimeMark.h"

namespace kits {

/// One hook of a consumer with its arguments, for the channel messages.
struct MidiEvent {
    enum class Hook : uint8 {
        NoteOff,
        NoteOn,
        KeyPressure,
        ControlChange,
        ProgramChange,
        ChannelPressure,
        PitchBend,
        SourceEnded,
        AllNotesOff,
    };
    /// The system time, in microseconds, at which it happened; 0 if that is unknown.
    bigtime_t time;
    Hook hook;
    /// The channel, 0..15. For AllNotesOff it is 1 if the message was for a single channel, which
    /// EventOf puts into `data1`.
    uint8 channel;
    /// The data bytes of the message; 0 for those that it does not have.
    uint8 data1;
    uint8 data2;
};

/// Returns the event of a channel message, with `status` in 0x80..0xEF and the data in 0..127: a
/// note-on with velocity 0 is a NoteOff, the controllers 120 and 123 to 127 are AllNotesOff.
MidiEvent EventOf(uint8 status, uint8 data1, uint8 data2, bigtime_t time) noexcept;

/// Returns the number of data bytes of a channel message.
constexpr int DataBytesOf(uint8 status) noexcept {
    return (status & 0xE0) == 0xC0 ? 1 : 2;
}

/// Calls the event's hook, in this thread.
VEXA_REALTIME void Call(const MidiEvent& event, BMidiLocalConsumer& consumer);

} // namespace kits
