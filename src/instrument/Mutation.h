// SPDX-License-Identifier: GPL-3.0-or-later
// Mutation: small random changes of a sound.
#pragma once

#include "documents/Sound.h"
#include "synth/PlaneFunction.h"

#include <cstdint>

namespace vexa {

/// The loudness of a sound, measured on three notes, a low, a middle and a high one, each held for
/// two seconds, with the controllers at 0.
struct Loudness {
    float peak = 0;
    /// The root of the mean square.
    float mean = 0;
    /// True if a value of f exceeded kMostHeard.
    bool bounded = false;
};
/// Measures the sound with that function, at the usual gain. It takes some milliseconds; with the
/// most costly function that can be played, a tenth of a second. Any thread that may wait.
Loudness MeasureLoudness(const Sound& sound, const PlaneFunction& f);

/// Returns the sound with random changes, by about a tenth, of coefficients, of the values and
/// times of envelope points and of macros. The same seed gives the same result. Numbers that are 0
/// stay 0, so that parts that are switched off stay off and notes still end. Texts that are no
/// numbers, the formula, the controllers, the view and the playing settings are unchanged, and the
/// pitch changes by a few cents at most. Values and times keep to their ranges and order.
///
/// `f` is the sound's function. By MeasureLoudness the result is at most 3 dB louder and at most 6
/// dB quieter; if no such sound is found, the sound itself is returned.
Sound Mutate(const Sound& sound, const PlaneFunction& f, std::uint64_t seed);

} // namespace vexa
