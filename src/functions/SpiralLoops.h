// SPDX-License-Identifier: GPL-3.0-or-later
// The sample function over a block of points, compiled once per instruction set.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstddef>
#include <span>

namespace vexa {

/// A spiral's numbers side by side. `sample` has last + 1 values.
struct SpiralTurns {
    const float* sample;
    int last;
    /// Each turn of the spiral has so many frames.
    float T;
    /// Neighbouring turns are so far apart in the plane.
    float alphap;
};

/// Computes the value of the spiral at a point, in the plainest form. Any thread, real-time safe.
VEXA_REALTIME float sampler2rfun(const SpiralTurns& turns, float x, float y);

/// The loops for one instruction set. Any thread, real-time safe.
struct SpiralLoops {
    /// values[i] = what sampler2rfun gives at (x[i], y[i]), the same bits. The arrays do not
    /// overlap.
    void (*Values)(const SpiralTurns& turns, const float* x, const float* y, float* values,
                   std::size_t count);
    /// The name of the instruction set.
    const char* name;
};

/// Returns the loops that this machine can run, the fastest last.
std::span<const SpiralLoops* const> RunnableSpiralLoops();

} // namespace vexa
