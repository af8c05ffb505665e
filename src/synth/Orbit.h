// SPDX-License-Identifier: GPL-3.0-or-later
// The orbit of a sounding note, as it is heard at one moment.
#pragma once

#include "synth/SoundParam.h"
#include "synth/Voice.h"

namespace vexa {

/// Returns the note's sums as the renderer has them. A note that is not heard yet, or that nothing
/// plays, has those that all notes have. Any thread.
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

/// Returns the note's orbit with centre and radii as they are at this moment; in one period they
/// change too little to be seen. Window thread.
Orbit OrbitOf(const VoiceView& v, const sound_param& p, const ControllerTable& controllers);

/// Returns the slot whose note has begun last; -1 where none sounds. Any thread.
int NewestSlot(const VoiceTable& voices);

} // namespace vexa
