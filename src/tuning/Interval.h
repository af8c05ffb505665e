// SPDX-License-Identifier: GPL-3.0-or-later
// Intervals between pitches, the same bits on every machine.
#pragma once

namespace vexa {

/// Cents of an octave.
constexpr double kOctave = 1200;

/// The ratio of frequencies of an interval in cents.
double RatioOf(double cents);

/// The cents of a ratio above 0.
double CentsOf(double ratio);

} // namespace vexa
