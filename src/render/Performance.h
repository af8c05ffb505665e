// SPDX-License-Identifier: GPL-3.0-or-later
// A MIDI file played on an instrument, sample by sample.
#pragma once

#include "kits/midi/EventGate.h"
#include "midi/Engine.h"
#include "render/MidiFile.h"

#include <cstddef>

namespace vexa {

/// Plays the events of a file, each at the sample nearest to its moment, and renders what is heard.
/// What it renders does not depend on how many samples it is asked for at a time.
class Performance {
  public:
    /// `rate` in samples per second, of which one in `oversampling` will be heard; goes on for
    /// `tail` seconds after the file's end. Both records must outlive the performance.
    Performance(Engine& instrument, const MidiFile& file, double rate, double tail,
                int oversampling = 1);

    /// From now on tells the watcher, which outlives the performance, of each event at its sample,
    /// before it is played.
    void Watch(kits::EventWatcher* next) { watcher = next; }

    /// Samples from the beginning to the end of the tail.
    int64 Length() const { return length; }
    /// Samples rendered so far.
    int64 Position() const { return position; }

    /// Renders the next `count` samples, or as many as are left; returns how many. Without `right`
    /// there is one ear only.
    std::size_t Render(float* left, float* right, std::size_t count);

    /// The most voices that have sounded at once so far.
    int32 MostVoices() const { return mostVoices; }

  private:
    int64 SampleOf(double seconds) const;
    void Play(const MidiEvent& event);

    Engine& instrument;
    const MidiFile& file;
    double rate;
    int64 length;
    int64 position = 0;
    std::size_t nextEvent = 0;
    kits::EventWatcher* watcher = nullptr;
    int32 mostVoices = 0;
};

} // namespace vexa
