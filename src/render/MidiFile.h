// SPDX-License-Identifier: GPL-3.0-or-later
// Reads Standard MIDI Files: their notes and controllers, each with its time.
#pragma once

#include "kits/midi/MidiEvent.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// One event that a synthesizer handles, in the form that consumers take.
struct MidiEvent {
    using Kind = kits::MidiEvent::Hook;

    /// The seconds since the start of the file, rounded once from an exact count, so that no drift
    /// accumulates.
    double seconds;
    Kind kind;
    /// As in kits::MidiEvent; `number` and `value` are its data.
    uint8 channel, number, value;

    /// Returns the MIDI channel on which the event came, 0..15.
    uint8 From() const { return kind == Kind::AllNotesOff ? number : channel; }
    /// Returns the event for the consumer, without its time.
    kits::MidiEvent ForConsumer() const { return {0, kind, channel, number, value}; }
    bool operator==(const MidiEvent&) const = default;
};

struct MidiFile {
    /// The events by time; events at the same time are in the order of their tracks. Only a
    /// note-off that ends an earlier note comes before all others of its time, if a note on the
    /// same key begins before it there.
    std::vector<MidiEvent> events;
    /// The seconds from the start to the last event of any kind, including the ends of the tracks.
    double duration = 0;
    /// The number of note-on events.
    std::size_t notes = 0;
    /// Sentences for the user about faults of the file that do not prevent playing.
    std::vector<std::string> warnings;

    /// Returns the events of the channels (0..15) for which `isThere` returns true, with the
    /// duration of the whole file and without the warnings, which concern the whole file.
    template<class Choice>
    MidiFile Part(Choice isThere) const {
        MidiFile part{{}, duration, 0, {}};
        std::ranges::copy_if(events, std::back_inserter(part.events),
                             [&](const MidiEvent& event) { return isThere(event.From()); });
        part.notes = static_cast<std::size_t>(
            std::ranges::count(part.events, MidiEvent::Kind::NoteOn, &MidiEvent::kind));
        return part;
    }
};

/// A larger file, in bytes, is refused: it is not music, and it would take about fifteen times its
/// size in memory.
constexpr std::size_t kMaxMidiFileSize = 64U << 20;

/// A file with an event after this time, in seconds, is refused. If only its end lies after it, the
/// file ends with its last event.
constexpr int kMaxMidiSeconds = 24 * 60 * 60;

/// Reads types 0 and 1 and the first track of type 2, plain or in a RIFF wrapper (RMID). Slight
/// faults, as other programs write them, are skipped with a warning. An error names the file, the
/// fault and its byte offset. Memory use is bounded by the size of the file, whatever its length
/// fields claim. Any thread but the media thread.
kits::Result<MidiFile> ReadMidiFile(const std::filesystem::path& path);

/// Reads the content of a file in the same way; messages refer to it as `name`.
kits::Result<MidiFile> ReadMidiFile(std::span<const uint8> bytes, std::string_view name);

} // namespace vexa
