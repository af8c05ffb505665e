// SPDX-License-Identifier: GPL-3.0-or-later
// The picture function over a block of points, compiled once per instruction set.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstddef>
#include <span>

namespace vexa {

/// A picture on the plane as plain numbers, for the loops.
struct PicturePlane {
    /// (right + 1) * (bottom + 1) values, row by row from the top left.
    const float* values;
    /// The last column and row, 0..4095.
    int right;
    int bottom;
    /// The pixels per unit of the plane.
    float scale;
    /// The column and the row of the origin, counted from the centre of the first pixel.
    float column;
    float row;
};

/// Returns the picture's value at a point, computed in the plainest form. Any thread, real-time
/// safe.
VEXA_REALTIME float PictureValue(const PicturePlane& plane, float x, float y);

/// The loops for one instruction set. Any thread, real-time safe.
struct PictureLoops {
    /// Sets values[i] to the same bits as PictureValue at (x[i], y[i]). The arrays do not overlap.
    void (*Values)(const PicturePlane& plane, const float* x, const float* y, float* values,
                   std::size_t count);
    /// The name of the instruction set.
    const char* name;
};

/// Returns the loops for each instruction set that this machine can run, the fastest last.
std::span<const PictureLoops* const> RunnablePictureLoops();

} // namespace vexa
