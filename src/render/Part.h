// SPDX-License-Identifier: GPL-3.0-or-later
// A part is one instrument of a render, with the events that it plays.
#pragma once

#include "instrument/Instrument.h"
#include "render/FilePrograms.h"
#include "render/MidiFile.h"
#include "render/Options.h"
#include "render/Performance.h"
#include "synth/Decimator.h"

#include <cstddef>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vexa {

/// Plays its events on an instrument of its own, oversampled as its sounds require, and decimates
/// the result to frames at the sample rate of the output file. One thread.
class Part {
  public:
    /// Takes the events of the part. All else outlives it; parts may share `sources`.
    Part(const Options& options, const kits::ProgramFolders& folders, FunctionSources& sources,
         MidiFile events);

    /// Loads the sound, and reads the sounds that program changes will choose. Faults of the latter
    /// are added to `warnings`. The report is on the function of `sound`; without it nothing plays.
    FunctionReport SetUp(const Sound& sound, const Tuning& tuning,
                         std::vector<std::string>& warnings);

    /// Returns the sounds that program changes will choose.
    const std::map<int32, FilePrograms::Chosen>& Programs() const { return programs.All(); }
    bool HasNotes() const { return events.notes > 0; }
    /// Returns 2 if any sound that plays a note has a spread, else 1.
    std::size_t Ears() const { return ears.size(); }
    /// Returns the length of the part in seconds, including the tail.
    double Seconds() const { return double(performance->Length()) / FullRate(); }
    double SecondsDone() const { return double(performance->Position()) / FullRate(); }
    std::size_t Notes() const { return performance->Notes(); }
    int32 MostVoices() const { return performance->MostVoices(); }
    std::size_t FadedNotes() const { return performance->FadedNotes(); }
    int64 StolenVoices() { return instrument.Engine().consumer.StolenVox(); }
    bool HasBounded() { return instrument.Engine().renderer.HasBounded(); }

    /// Renders a block (Options::block frames), or the rest. The decimators delay the last frames.
    /// An error is the compiler's, for a sound that a program change has chosen.
    kits::Result<void> Render();
    /// Returns the number of frames that are rendered and not yet taken.
    std::size_t Ready() const { return ears[0].frames.size(); }
    /// Returns true if no more frames will become ready.
    bool IsDone() const { return done; }
    /// Takes the next frames, as many as are ready and `mix` has room for, and adds them to `mix`,
    /// whose frames have `channels` interleaved channels. A single ear is added to every channel.
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
    /// The samples that the engine computes for each frame: the largest oversampling factor of the
    /// sounds that are heard.
    int oversampling = 1;
    std::optional<Performance> performance;
    std::vector<Ear> ears;
    bool done = false;
};

} // namespace vexa
