// SPDX-License-Identifier: GPL-3.0-or-later
// The picture function over a block of points, compiled once per instruction set.
#pragma once

#include <cstddef>
#include <span>

namespace vexa {

/// A picture on the plane, its numbers side by side.
struct PicturePlane {
    /// (right + 1) * (bottom + 1) values, row after row from the top left.
    const float* values;
    /// The last column and row, 0..4095.
    int right;
    int bottom;
    /// Pixels per unit of the plane.
    float scale;
    /// The origin's column and row, counted from the middle of the first pixel.
    float column;
    float row;
};

/// The value of the picture at a point, in the plainest form. Any thread, real-time safe.
float PictureValue(const PicturePlane& plane, float x, float y);

/// Loops for one instruction set. Any thread, real-time safe.
struct PictureLoops {
    /// values[i] = what PictureValue gives at (x[i], y[i]), the same bits. The arrays do not
    /// overlap.
    void (*Values)(const PicturePlane& plane, const float* x, const float* y, float* values,
                   std::size_t count);
    /// Of the instruction set.
    const char* name;
};

/// Those that this machine can run, the fastest last.
std::span<const PictureLoops* const> RunnablePictureLoops();

} // namespace vexa
