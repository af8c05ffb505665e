// SPDX-License-Identifier: GPL-3.0-or-later
// A performance is a MIDI file played on an instrument, sample by sample.
#pragma once

#include "kits/midi/EventGate.h"
#include "midi/Engine.h"
#include "render/MidiFile.h"

#include <cstddef>

namespace vexa {

/// Plays the events of a file, each at the sample nearest to its time, and renders the result. If
/// any note has not ended by then, the last 0.01 s fade out; if a key or a pedal still holds a note
/// that is heard, the last 0.1 s of the tail do. The output does not depend on the number of
/// samples rendered per call.
class Performance {
  public:
    /// Plays at `rate` samples per second, `oversampling` times the rate of the output, until
    /// `tail` seconds after the file's end. `instrument` and `file` outlive it.
    Performance(Engine& instrument, const MidiFile& file, double rate, double tail,
                int oversampling = 1);

    /// From now on calls the watcher with each event, at its sample and before it is played. The
    /// watcher outlives the performance.
    void Watch(kits::EventWatcher* next) { watcher = next; }

    /// Returns the number of samples from the start to the end of the tail.
    int64 Length() const { return length; }
    /// Returns the number of samples rendered so far.
    int64 Position() const { return position; }

    /// Renders the next `count` samples, or as many as are left, and returns their number. If
    /// `right` is null only one ear is rendered.
    std::size_t Render(float* left, float* right, std::size_t count);

    /// Returns the number of notes so far that began on channels that are heard.
    std::size_t Notes() const { return notes; }
    /// Returns the greatest number of voices that have sounded at once so far.
    int32 MostVoices() const { return mostVoices; }
    /// Returns the number of held notes that were faded out, once all is rendered.
    std::size_t FadedNotes() const { return fadedNotes; }

  private:
    int64 SampleOf(double seconds) const;
    void Play(const MidiEvent& event);
    std::size_t HeldNotes() const;
    bool Sounds() const;
    void FadeOut(float* samples, int64 first, int64 next) const;

    Engine& instrument;
    const MidiFile& file;
    double rate;
    int64 length;
    /// The sample, after the last event, from which notes that are still held fade out.
    int64 fadeStart;
    /// The sample from which notes that have not ended fade out.
    int64 cutStart;
    int64 position = 0;
    std::size_t nextEvent = 0;
    kits::EventWatcher* watcher = nullptr;
    std::size_t notes = 0;
    int32 mostVoices = 0;
    std::size_t fadedNotes = 0;
    /// True if the end cuts a note off.
    bool isCut = false;
};

} // namespace vexa
