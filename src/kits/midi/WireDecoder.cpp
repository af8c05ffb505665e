// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/midi/WireDecoder.h"

#include "kits/midi/MidiEvent.h"

namespace kits {

namespace {

constexpr uint8 kSysex = 0xF0;
constexpr uint8 kSysexEnd = 0xF7;
constexpr uint8 kFirstRealTime = 0xF8;
constexpr uint8 kFirstSwitch = 64;
constexpr uint8 kLastSwitch = 69;
constexpr uint8 kEndVelocity = 64; // the standard's value for a missing velocity

/// Returns the number of data bytes after a status; -1 for an undefined status.
int DataBytes(uint8 status) {
    if (status < 0xF0)
        return DataBytesOf(status);
    switch (status) {
    case 0xF1: // time code quarter frame
    case 0xF3: // song select
        return 1;
    case 0xF2: // song position
        return 2;
    case 0xF6: // tune request
        return 0;
    default:
        return -1;
    }
}

} // namespace

void WireDecoder::Decode(std::span<const uint8> bytes, bigtime_t time) {
    for (const uint8 byte : bytes) {
        if (byte == 0xF9 || byte == 0xFD) // real time, but without a meaning
            continue;
        if (byte >= kFirstRealTime)
            consumer.SystemRealTime(byte, time);
        else if (byte & 0x80)
            Status(byte, time);
        else
            Data(byte, time);
    }
}

void WireDecoder::BeginMessage() {
    if (status != kSysex)
        status = 0;
}

void WireDecoder::Status(uint8 byte, bigtime_t time) {
    if (status == kSysex && byte == kSysexEnd)
        EndSysex(time);
    have = 0;
    need = DataBytes(byte);
    status = 0;
    if (byte == kSysex) {
        status = kSysex;
        sysex.clear();
        sysexFits = true;
    } else if (need == 0) {
        consumer.SystemCommon(byte, 0, 0, time);
    } else if (need > 0) {
        status = byte;
    }
}

void WireDecoder::Data(uint8 byte, bigtime_t time) {
    if (status == 0)
        return;
    if (status == kSysex) {
        sysexFits = sysexFits && sysex.size() < kLongestSysex;
        if (sysexFits)
            sysex.push_back(byte);
        return;
    }
    data[have++] = byte;
    if (have < need)
        return;
    have = 0;
    if (status < 0xF0) {
        ChannelMessage(time);
        return;
    }
    consumer.SystemCommon(status, data[0], need > 1 ? data[1] : uint8(0), time);
    status = 0; // system common messages have no running status
}

void WireDecoder::ChannelMessage(bigtime_t time) {
    using enum MidiEvent::Hook;
    const uint8 channel = status & 0x0F;
    const MidiEvent event = EventOf(status, data[0], need > 1 ? data[1] : uint8(0), time);
    if (event.hook == NoteOn || event.hook == NoteOff)
        held[channel].set(event.data1, event.hook == NoteOn);
    else if (event.hook == AllNotesOff)
        held[channel].reset();
    else if (event.hook == PitchBend || (event.hook == ControlChange &&
                                         event.data1 >= kFirstSwitch && event.data1 <= kLastSwitch))
        moved.set(channel);
    Call(event, consumer);
}

void WireDecoder::EndNotes(bigtime_t time) {
    for (std::size_t channel = 0; channel < held.size(); channel++) {
        for (std::size_t note = 0; held[channel].any() && note < held[channel].size(); note++) {
            if (held[channel][note])
                consumer.NoteOff(static_cast<uchar>(channel), static_cast<uchar>(note),
                                 kEndVelocity, time);
        }
        held[channel].reset();
        if (moved[channel])
            consumer.SourceEnded(static_cast<uchar>(channel), time);
    }
    moved.reset();
}

void WireDecoder::EndSysex(bigtime_t time) {
    if (sysexFits)
        consumer.SystemExclusive(sysex.data(), sysex.size(), time);
}

} // namespace kits
