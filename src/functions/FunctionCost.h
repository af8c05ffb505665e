// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the time that a function takes.
#pragma once

#include "synth/PlaneFunction.h"

#include <optional>
#include <string>

namespace vexa {

/// Returns the nanoseconds per point of `f` at the slowest of three places: near the origin, round
/// a centre that has drifted to 1000, and far out at 100000. It measures the processor time of the
/// calling thread, so that other programs do not count. Takes a few hundredths of a second, or the
/// time that `f` takes for some points if that is longer.
double MeasureCost(const PlaneFunction& f);

/// Returns the reason why a function cannot be played: one voice of it takes more than half of one
/// core's time at 48000 samples per second. Returns nothing if it can be played.
std::optional<std::string> TooCostly(double nanosecondsPerPoint);

/// Returns the approximate number of voices of a function that one core can play at 48000 samples
/// per second, 1..1000.
int VoicesOf(double nanosecondsPerPoint);

} // namespace vexa
