// SPDX-License-Identifier: GPL-3.0-or-later
// Intervals and factors on a frequency.
#pragma once

#include "kits/maths/Functions.h"
#include "kits/support/RealtimeMark.h"

#include <numbers>

namespace vexa {

/// Returns the factor of an interval in semitones. Any thread, real-time safe, as all functions
/// here.
VEXA_REALTIME inline double RatioOf(double semitones) noexcept {
    return kits::maths::Exponential(semitones * (std::numbers::ln2 / 12));
}

/// Returns the semitones from a frequency up to another.
VEXA_REALTIME inline double SemitonesBetween(double from, double to) noexcept {
    return kits::maths::Logarithm(to / from) * (12 / std::numbers::ln2);
}

/// Returns the factor of a level in decibels.
VEXA_REALTIME inline double LevelOf(double decibels) noexcept {
    // As a factor, one decibel equals 12 log2(10) / 20 semitones.
    constexpr double kSemitonesInDecibel = 1.9931568569324174;
    return RatioOf(decibels * kSemitonesInDecibel);
}

} // namespace vexa
