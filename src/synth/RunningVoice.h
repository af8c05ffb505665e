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

/// The running state of one voice; its slot in the voice table shows what others may know of it.
struct RunningVoice {
    /// The slot's counts of changes, notes and pitches, as they were when they were taken up.
    uint32 changes = 0;
    uint32 notes = 0, tunes = 0;
    bool sounds = false;
    bool released = false;
    /// It has been taken for ended, and the time that the function hears stands.
    bool stopped = false;
    float vel = 0, key = 0, freq = 0;
    /// Where what sounds has come to another channel, by a legato key or by a note that goes on
    /// from it, its volume goes from what it was, which is `before`, to that of the channel as
    /// `arrives` goes from 0 to 1.
    float before = 1;
    /// The channel, 0..15.
    std::size_t channel = 0;
    Ramp<float> arrives{1};
    OwnValues own = kNoOwnValues;
    /// The intervals that glide and bend put between freq and the pitch, in semitones.
    PitchRamp glide, bend;
    /// Seconds since note-on or, once released, since note-off.
    double t = 0;
    /// The samples since note-on; they go on after the release, but where it is `stopped`.
    std::size_t age = 0;
    /// The orbit's centre.
    double cx = 0, cy = 0;
    Oscillator x, y;
    /// The values of OrbitSums. Other values are reached within `smooth` samples, but for those of
    /// a note that has just begun.
    std::array<Ramp<double>, kOrbitSums> sums;
    std::size_t smooth = 0;
    bool fresh = false, retuned = false;
    /// The function's inputs that are macros and controllers: the note's own values, or those of
    /// all where it has none.
    std::array<Ramp<float>, kMostInputs> heard;
    /// The four envelopes (EnvelopePlaces), and their values at note-off.
    std::array<EnvelopeTrack, 4> envelopes;
    std::array<float, 4> rellevel{};
    LowCutFilter filter;
    /// The filter of the right ear, while the two hear different things.
    LowCutFilter rightFilter;
    /// True where at the end of the last cell the note's point had come to a stand for good
    /// (VoiceMotion::Stands).
    bool stands = false;
    /// True where the filter had settled too: until something changes, each sample is filter.out.
    bool rests = false;
    /// True where nothing more will be heard of it, as long as nothing changes.
    bool over = false;
    /// While the point stands: whether what the function gives has moved away since the end of the
    /// last cell, what it was then, and for how many samples up to that end it had not moved in any
    /// cell.
    bool stirs = false;
    float level = 0;
    std::size_t stillFor = 0;
    /// It has been cut off and fades, for so many samples more.
    std::size_t left = 0;
    bool ends = false;
    /// The gains are not simply 1.
    bool scaled = false;
    /// The slot's count `expressed` when macros, tuning and gains were taken up.
    uint32 expressed = 0;
    /// The tuning that a host gives the note, in semitones.
    double tuning = 0;
    /// The factors on what the left and the right ear hear.
    std::array<Ramp<float>, 2> gains{Ramp<float>(1), Ramp<float>(1)};
    OwnMacros macros{};
};

} // namespace vexa
