// SPDX-License-Identifier: GPL-3.0-or-later
// Intervals between pitches, the same bits on every machine.
#pragma once

namespace vexa {

/// An octave has so many cents.
constexpr double kOctave = 1200;

/// Returns the ratio of frequencies of an interval in cents.
double RatioOf(double cents);

/// Returns the size of a ratio above 0 in cents.
double CentsOf(double ratio);

} // namespace vexa
