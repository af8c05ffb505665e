// SPDX-License-Identifier: GPL-3.0-or-later
// A sound that is a little other than another one.
#pragma once

#include "documents/Sound.h"
#include "synth/PlaneFunction.h"

#include <cstdint>

namespace vexa {

/// Three notes, held for two seconds, tell how loud a sound is: a low, a middle and a high one,
/// with controllers at 0.
struct Loudness {
    float peak = 0;
    /// The root of the mean square.
    float mean = 0;
    /// True where it went beyond all bounds (kMostHeard).
    bool bounded = false;
};
/// Measures the sound with that function, at the usual gain. It takes some milliseconds; with the
/// most costly function that can be played, a tenth of a second. Any thread that may wait.
Loudness MeasureLoudness(const Sound& sound, const PlaneFunction& f);

/// The sound with some of its coefficients, of the values and times of its envelopes' points and of
/// its macros changed by about a tenth; the same for the same seed. What is 0 stays so, so that
/// what is switched off stays off and notes still end; so does what is no number. Formula,
/// controllers, view and how it is played stay as they are, and the pitch but for some cents.
/// Values and times keep to their ranges and order.
///
/// `f` is the sound's function. The result is at most 3 dB louder and 6 dB quieter (Loudness), as
/// far as that can be known; where chance finds no such sound it is the same sound.
Sound Mutate(const Sound& sound, const PlaneFunction& f, std::uint64_t seed);

} // namespace vexa
