// SPDX-License-Identifier: GPL-3.0-or-later
// The orbit of a sounding note at one moment.
#pragma once

#include "synth/SoundParam.h"
#include "synth/Voice.h"

namespace vexa {

/// Returns the note's sums in the renderer. For a note that has not been rendered yet, or without a
/// renderer, it returns those of the common coefficients and controllers. Any thread.
OrbitSums SumsOf(const VoiceView& v, const sound_param& p, const ControllerTable& controllers);

/// The figure x = cx + rx cos(phasex + fx a), y = cy + ry sin(phasey + fy a): while `a` goes from 0
/// to 2 pi the point goes through one period of the note.
struct Orbit {
    double cx, cy;
    double rx, ry;
    /// The phases in radians.
    double phasex, phasey;
    float fx, fy;
};

/// Returns the note's orbit with its current centre and radii; their change within one period is
/// too small to be seen. Window thread.
Orbit OrbitOf(const VoiceView& v, const sound_param& p, const ControllerTable& controllers);

/// Returns the slot of the newest note that is not over; -1 if there is none. Any thread.
int NewestSlot(const VoiceTable& voices);

} // namespace vexa
