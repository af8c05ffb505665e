// SPDX-License-Identifier: GPL-3.0-or-later
// A performance is a MIDI file played on an instrument, sample by sample.
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
    /// Makes a performance at `rate` samples per second, of which one in `oversampling` will be
    /// heard; it goes on for `tail` seconds after the file's end. Both records must outlive it.
    Performance(Engine& instrument, const MidiFile& file, double rate, double tail,
                int oversampling = 1);

    /// Tells the watcher, which outlives the performance, from now on of each event at its sample,
    /// before it is played.
    void Watch(kits::EventWatcher* next) { watcher = next; }

    /// Returns the samples from the beginning to the end of the tail.
    int64 Length() const { return length; }
    /// Returns how many samples have been rendered so far.
    int64 Position() const { return position; }

    /// Renders the next `count` samples, or as many as are left; returns how many. Where `right` is
    /// null there is one ear only.
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
