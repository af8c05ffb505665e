// SPDX-License-Identifier: GPL-3.0-or-later
// This reads Standard MIDI Files: their notes and controllers, each with its moment.
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

/// One event that a synthesizer acts on, as consumers have it.
struct MidiEvent {
    using Kind = kits::MidiEvent::Hook;

    /// The seconds since the start of the file, rounded once from an exact count, so that no drift
    /// accumulates.
    double seconds;
    Kind kind;
    /// These are as in kits::MidiEvent; `number` and `value` are its data.
    uint8 channel, number, value;

    /// Returns the MIDI channel that the event came on, 0..15.
    uint8 From() const { return kind == Kind::AllNotesOff ? number : channel; }
    /// Returns the event for the consumer, without its time.
    kits::MidiEvent ForConsumer() const { return {0, kind, channel, number, value}; }
    bool operator==(const MidiEvent&) const = default;
};

struct MidiFile {
    /// The events by time; those of the same moment are in the order of their tracks.
    std::vector<MidiEvent> events;
    /// The seconds from the start to the last event of any kind, the tracks' ends included.
    double duration = 0;
    /// How many of the events are note-ons.
    std::size_t notes = 0;
    /// Sentences for a person on what is wrong with the file although it can be played.
    std::vector<std::string> warnings;

    /// Returns what of the file is on a channel that `isThere` is true of (0..15), for as long as
    /// the file lasts; without the warnings, which are the whole file's.
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

/// A file above this many bytes is refused: it is no music, and it would need some fifteen times
/// its size in memory.
constexpr std::size_t kMaxMidiFileSize = 64U << 20;

/// A file that lasts longer, in seconds, is refused.
constexpr int kMaxMidiSeconds = 24 * 60 * 60;

/// Reads types 0 and 1 and the first track of type 2, plain or in a RIFF wrapper (RMID). Slight
/// faults that other programs leave are read over with a warning; an error names the file, the
/// fault and the byte where it lies. Memory is bounded by the size of the file, whatever its length
/// fields say. Any thread but the media thread.
kits::Result<MidiFile> ReadMidiFile(const std::filesystem::path& path);

/// Reads the content of a file in the same way; messages call it `name`.
kits::Result<MidiFile> ReadMidiFile(std::span<const uint8> bytes, std::string_view name);

} // namespace vexa
