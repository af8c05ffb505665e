// SPDX-License-Identifier: GPL-3.0-or-later
// A note as the media thread plays it.
#pragma once

#include "synth/BlockLoops.h"
#include "synth/EnvelopeTrack.h"
#include "synth/Oscillator.h"
#include "synth/OwnControllers.h"
#include "synth/ParameterTable.h"
#include "synth/Ramp.h"

#include <array>

namespace vexa {

/// The running state of one voice; its slot in the voice table shows what others may know of it.
struct RunningVoice {
    /// Of the slot's state and of its notes, as they were taken up.
    uint32 changes = 0;
    uint32 notes = 0, tunes = 0;
    bool sounds = false;
    bool released = false;
    float vel = 0, key = 0, freq = 0;
    /// 0..15.
    std::size_t channel = 0;
    OwnValues own = kNoOwnValues;
    /// What lies between the pitch and freq, semitones.
    PitchRamp glide, bend;
    /// Seconds since note-on or, once released, since note-off.
    double t = 0;
    /// Samples since note-on; they go on after the release.
    std::size_t age = 0;
    /// The orbit's centre.
    double cx = 0, cy = 0;
    Oscillator x, y;
    /// What the sums of the orbit's formulas come to, x and y by turns: the weight of the drift's
    /// envelope, the rest of the drift, the radius. Other values are reached within `smooth`
    /// samples, but for those of a note that has just begun.
    std::array<Ramp<double>, 6> sums;
    std::size_t smooth = 0;
    bool fresh = false, retuned = false;
    /// As `own`, or the controllers where it has none.
    std::array<Ramp<float>, kOwnControllers> owned;
    /// The four envelopes (EnvelopePlaces), and their values at note-off.
    std::array<EnvelopeTrack, 4> envelopes;
    std::array<float, 4> rellevel{};
    LowCutFilter filter;
    /// That of the right ear, while the two hear different things.
    LowCutFilter rightFilter;
    /// At the end of the last cell its point had come to a stand for good (VoiceMotion::Stands).
    bool stands = false;
    /// And the filter had settled: until something changes, each sample is filter.out.
    bool rests = false;
    /// It has been cut off and fades, for so many samples more.
    bool ends = false;
    std::size_t left = 0;
};

} // namespace vexa
