// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/MidiEvent.h"

#include "kits/midi/ControllerNumbers.h"

namespace kits {

MidiEvent EventOf(uint8 status, uint8 data1, uint8 data2, bigtime_t time) noexcept {
    using enum MidiEvent::Hook;
    const uint8 channel = status & 0x0F;
    switch (status & 0xF0) {
    case 0x80:
        return {time, NoteOff, channel, data1, data2};
    case 0x90:
        return {time, data2 == 0 ? NoteOff : NoteOn, channel, data1, data2};
    case 0xA0:
        return {time, KeyPressure, channel, data1, data2};
    case 0xB0:
        if (data1 == kAllSoundOff || data1 >= kAllNotesOff)
            return {time, AllNotesOff, 1, channel, 0};
        return {time, ControlChange, channel, data1, data2};
    case 0xC0:
        return {time, ProgramChange, channel, data1, 0};
    case 0xD0:
        return {time, ChannelPressure, channel, data1, 0};
    default:
        return {time, PitchBend, channel, data1, data2};
    }
}

void Call(const MidiEvent& e, BMidiLocalConsumer& consumer) {
    switch (e.hook) {
    case MidiEvent::Hook::NoteOff:
        return consumer.NoteOff(e.channel, e.data1, e.data2, e.time);
    case MidiEvent::Hook::NoteOn:
        return consumer.NoteOn(e.channel, e.data1, e.data2, e.time);
    case MidiEvent::Hook::KeyPressure:
        return consumer.KeyPressure(e.channel, e.data1, e.data2, e.time);
    case MidiEvent::Hook::ControlChange:
        return consumer.ControlChange(e.channel, e.data1, e.data2, e.time);
    case MidiEvent::Hook::ProgramChange:
        return consumer.ProgramChange(e.channel, e.data1, e.time);
    case MidiEvent::Hook::ChannelPressure:
        return consumer.ChannelPressure(e.channel, e.data1, e.time);
    case MidiEvent::Hook::PitchBend:
        return consumer.PitchBend(e.channel, e.data1, e.data2, e.time);
    case MidiEvent::Hook::SourceEnded:
        return consumer.SourceEnded(e.channel, e.time);
    case MidiEvent::Hook::AllNotesOff:
        return consumer.AllNotesOff(e.channel != 0, e.time);
    }
}

} // namespace kits
