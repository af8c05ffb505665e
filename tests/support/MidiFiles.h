// SPDX-License-Identifier: GPL-3.0-or-later
// Makes Standard MIDI Files, and a sound whose notes can be found in the rendered samples.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace test {

using namespace std::string_literals;

inline std::string BigEndian(std::size_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift);
    return text;
}

inline std::string Header(int type, int tracks, int division) {
    return "MThd\0\0\0\6"s + BigEndian(type, 2) + BigEndian(tracks, 2) + BigEndian(division, 2);
}

inline const std::string kEnd = "\0\xFF\x2F\0"s;

/// Returns a track chunk; the end-of-track event is added.
inline std::string Track(const std::string& events) {
    return "MTrk" + BigEndian(events.size() + kEnd.size(), 4) + events + kEnd;
}

/// A message and its time in milliseconds.
struct MidiMessage {
    int at;
    std::vector<std::uint8_t> bytes;
};

/// Returns a file with the messages in the order of their times, in one track.
inline std::string MidiFileOf(std::vector<MidiMessage> messages) {
    std::ranges::stable_sort(messages, {}, &MidiMessage::at);
    std::string events;
    int now = 0;
    for (const MidiMessage& message : messages) {
        const int ticks = message.at - now;
        for (int shift = 21; shift > 0; shift -= 7) {
            if (ticks >> shift)
                events += static_cast<char>(0x80 | (ticks >> shift & 0x7F));
        }
        events += static_cast<char>(ticks & 0x7F);
        events.append(message.bytes.begin(), message.bytes.end());
        now = message.at;
    }
    return Header(0, 1, (256 - 25) << 8 | 40) + Track(events);
}

/// The plane f = x with circles of radius 1 that have their full size at once and until 20 ms after
/// note-off: a note is a sine from its second sample on.
constexpr const char* kSineSound =
    "<vexasound><vexafunction><expression>x</expression></vexafunction>"
    "<dcxdt><env>0</env></dcxdt><dcydt><env>0</env></dcydt>"
    "<ax><env>1</env><envdata><envpoint t=\"0\" val=\"1\" fku=\"false\"/>"
    "<envpoint t=\"0.02\" val=\"0\" fku=\"true\"/></envdata></ax>"
    "<ay><env>0</env></ay></vexasound>";

} // namespace test
