// SPDX-License-Identifier: GPL-3.0-or-later
// A note as the media thread plays it.
#pragma once

#include "synth/BlockLoops.h"
#include "synth/EnvelopeTrack.h"
#include "synth/Macros.h"
#include "synth/Oscillator.h"
#include "synth/OwnControllers.h"
#include "synth/ParameterTable.h"
#include "synth/PlaneFunction.h"
#include "synth/Ramp.h"
#include "synth/Voice.h"

#include <array>

namespace vexa {

/// A time without a movement of the function's value.
struct Stillness {
    /// True if the value has moved since the end of the last cell.
    bool stirs = false;
    /// The value at that end.
    float level = 0;
    /// The number of samples up to that end without a movement in any cell.
    std::size_t lasts = 0;
};

/// The running state of one voice. Its slot in the voice table publishes the part that other
/// threads may read.
struct RunningVoice {
    /// The slot's counts of changes, notes and pitches when this voice last took them up.
    uint32 changes = 0;
    uint32 notes = 0, tunes = 0;
    bool sounds = false;
    bool released = false;
    /// True if the voice was considered ended; the function's time input then stands still.
    bool stopped = false;
    float vel = 0, key = 0, freq = 0;
    /// When the sounding voice moves to another channel, by a legato key or by a note that
    /// continues it, its volume goes from its previous value `before` to that of the new channel
    /// while `arrives` goes from 0 to 1.
    float before = 1;
    /// The channel, 0..15.
    std::size_t channel = 0;
    Ramp<float> arrives{1};
    OwnValues own = kNoOwnValues;
    /// The intervals, in semitones, by which glide and bend move the pitch away from `freq`.
    PitchRamp glide, bend;
    /// Seconds since note-on or, once released, since note-off.
    double t = 0;
    /// The samples since note-on. The count continues after the release, but not while `stopped`.
    std::size_t age = 0;
    /// The orbit's centre.
    double cx = 0, cy = 0;
    Oscillator x, y;
    /// The values of OrbitSums. They reach a new target within `smooth` samples, except that a note
    /// that has just begun starts at its targets.
    std::array<Ramp<double>, kOrbitSums> sums;
    std::size_t smooth = 0;
    bool fresh = false, retuned = false;
    /// The function's inputs that are macros and controllers: the note's own values, or the common
    /// ones if it has none.
    std::array<Ramp<float>, kMostInputs> heard;
    /// The four envelopes (EnvelopePlaces), and their values at note-off.
    std::array<EnvelopeTrack, 4> envelopes;
    std::array<float, 4> rellevel{};
    LowCutFilter filter;
    /// The filter of the right ear, while the two ears hear different signals.
    LowCutFilter rightFilter;
    /// True if the note's point had stopped for good at the end of the last cell
    /// (VoiceMotion::Stands).
    bool stands = false;
    /// True if the filter had settled too: until something changes, each sample is filter.out.
    bool rests = false;
    /// True if the voice stays silent as long as nothing changes.
    bool over = false;
    /// How long the function's value has not moved: while the point stands, and for each ear since
    /// the release, whether the point stands or not.
    Stillness still;
    std::array<Stillness, 2> calm;
    /// The remaining samples of the fade after the voice was cut off (`ends`).
    std::size_t left = 0;
    bool ends = false;
    /// True if the gains differ from 1.
    bool scaled = false;
    /// The slot's count `expressed` when macros, tuning and gains were last taken up.
    uint32 expressed = 0;
    /// The host's tuning of this note, in semitones.
    double tuning = 0;
    /// The gains of the left and the right ear.
    std::array<Ramp<float>, 2> gains{Ramp<float>(1), Ramp<float>(1)};
    OwnMacros macros{};
};

} // namespace vexa
