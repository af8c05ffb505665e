// SPDX-License-Identifier: GPL-3.0-or-later
// A part is one instrument of a render and what it plays.
#pragma once

#include "instrument/Instrument.h"
#include "render/FilePrograms.h"
#include "render/MidiFile.h"
#include "render/Options.h"
#include "render/Performance.h"
#include "synth/Decimator.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vexa {

/// Plays its events on an instrument of its own, at the multiple of the rate that its sounds ask
/// for, into frames of the rate of the file that is made. One thread.
class Part {
  public:
    /// Makes a part of the events. `options` and `folders` outlive it.
    Part(const Options& options, const kits::ProgramFolders& folders, MidiFile events);

    /// Sets up all that is heard: the sound, and those that program changes will choose. What is
    /// wrong with these is added to the warnings. The error is the sound's.
    kits::Result<void> SetUp(const Sound& sound, const Tuning& tuning,
                             std::vector<std::string>& warnings);

    bool HasNotes() const { return events.notes > 0; }
    /// Returns 2 where a sound that strikes notes has a spread, else 1.
    std::size_t Ears() const { return ears.size(); }
    /// Returns the length, in seconds, of all that is to be heard, the tail included.
    double Seconds() const { return double(performance->Length()) / FullRate(); }
    double SecondsDone() const { return double(performance->Position()) / FullRate(); }
    int32 MostVoices() const { return performance->MostVoices(); }
    int64 StolenVoices() { return instrument.Playing().consumer.StolenVox(); }
    bool HasBounded() { return instrument.Playing().renderer.HasBounded(); }

    /// Renders as many frames as a block has (Options::block), or what is left. The decimators
    /// hold the last ones back. An error is what the compiler says of a sound that a program change
    /// has chosen.
    kits::Result<void> Render();
    /// Returns the frames that were rendered and not taken.
    std::size_t Ready() const { return ears[0].frames.size(); }
    /// True where no more will be ready than is.
    bool IsDone() const { return done; }
    /// Takes the next frames, as many as `mix` has of that many channels by turns, or as are ready,
    /// and adds them to it: one ear to all channels alike.
    void MixInto(std::span<float> mix, std::size_t channels);

  private:
    struct Ear {
        Decimator decimator;
        std::vector<float> block, frames;
    };
    double FullRate() const { return double(options.rate) * oversampling; }

    const Options& options;
    const MidiFile events;
    Instrument instrument;
    FilePrograms programs;
    /// The samples that the engine computes for each frame: as many as the sound wants that wants
    /// most of those heard.
    int oversampling = 1;
    std::optional<Performance> performance;
    std::vector<Ear> ears;
    bool done = false;
};

} // namespace vexa
