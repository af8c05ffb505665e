// SPDX-License-Identifier: GPL-3.0-or-later
// The sample function over a block of points, compiled once per instruction set.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstddef>
#include <span>

namespace vexa {

/// A spiral as plain numbers, for the loops. `sample` has last + 1 values.
struct SpiralTurns {
    const float* sample;
    int last;
    /// The frames per turn of the spiral.
    float T;
    /// The distance of neighbouring turns in the plane.
    float alphap;
};

/// Returns the spiral's value at a point, computed in the plainest form. Any thread, real-time
/// safe.
VEXA_REALTIME float sampler2rfun(const SpiralTurns& turns, float x, float y);

/// The loops for one instruction set. Any thread, real-time safe.
struct SpiralLoops {
    /// Sets values[i] to the same bits as sampler2rfun at (x[i], y[i]). The arrays do not overlap.
    void (*Values)(const SpiralTurns& turns, const float* x, const float* y, float* values,
                   std::size_t count);
    /// The name of the instruction set.
    const char* name;
};

/// Returns the loops for each instruction set that this machine can run, the fastest last.
std::span<const SpiralLoops* const> RunnableSpiralLoops();

} // namespace vexa
