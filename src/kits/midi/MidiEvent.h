// SPDX-License-Identifier: GPL-3.0-or-later
// Events of a synthesizer: what the channel messages of MIDI mean to a consumer.
#pragma once

#include "kits/midi/MidiLocalConsumer.h"
#include "kits/support/RealtimeMark.h"

namespace kits {

/// One hook of a consumer and its arguments, those of the channel messages.
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
    /// System time, microseconds, at which it happened; 0 where nobody knows.
    bigtime_t time;
    Hook hook;
    /// The channel, 0..15. For AllNotesOff it is 1 if the message was for one channel, which
    /// `data1` then tells.
    uint8 channel;
    /// The data bytes as they stand in the message, 0 where it has none.
    uint8 data1;
    uint8 data2;
};

/// Returns what a channel message means, `status` being 0x80..0xEF and the data 0..127: a note-on
/// with velocity 0 is a NoteOff, the controllers 120 and 123 to 127 are AllNotesOff.
MidiEvent EventOf(uint8 status, uint8 data1, uint8 data2, bigtime_t time) noexcept;

/// Returns the number of data bytes of a channel message.
constexpr int DataBytesOf(uint8 status) noexcept {
    return (status & 0xE0) == 0xC0 ? 1 : 2;
}

/// Calls the event's hook, in this thread.
VEXA_REALTIME void Call(const MidiEvent& event, BMidiLocalConsumer& consumer);

} // namespace kits
