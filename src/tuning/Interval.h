// SPDX-License-Identifier: GPL-3.0-or-later
// Intervals between pitches, the same bits on every machine.
#pragma once

namespace vexa {

/// The cents in an octave.
constexpr double kOctave = 1200;

/// Returns the frequency ratio of an interval in cents.
double RatioOf(double cents);

/// Returns the size in cents of a frequency ratio above 0.
double CentsOf(double ratio);

} // namespace vexa
