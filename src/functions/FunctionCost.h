// SPDX-License-Identifier: GPL-3.0-or-later
// This measures what a function costs.
#pragma once

#include "synth/PlaneFunction.h"

#include <optional>
#include <string>

namespace vexa {

/// Nanoseconds that f takes for a point, where it takes longest: near the origin, round a centre
/// that has drifted to 1000, and far out at 100000. Processor time of the calling thread, so that
/// other programs do not count. Takes a few hundredths of a second, or as long as f does for some
/// points if that is more.
double MeasureCost(const PlaneFunction& f);

/// Returns why f cannot be played: one voice of it takes more than half of one core's time at 48000
/// samples per second. Nothing if it can.
std::optional<std::string> TooCostly(double nanosecondsPerPoint);

/// About how many voices of it one core can play at 48000 samples per second, at least 1 and at
/// most a thousand.
int VoicesOf(double nanosecondsPerPoint);

} // namespace vexa
