// SPDX-License-Identifier: GPL-3.0-or-later
// PictureLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "functions/PictureLoops.h"

namespace vexa {

extern const PictureLoops VEXA_LOOPS_TABLE;

namespace {

/// Returns `place` limited to 0..last; 0 for NaN.
inline float Bounded(float place, int last) {
    const float end = static_cast<float>(last);
    const float low = place > 0 ? place : 0.0F;
    return low < end ? low : end;
}

/// Computes the formulas of PictureValue.
void Values(const PicturePlane& plane, const float* __restrict x, const float* __restrict y,
            float* __restrict values, std::size_t count) {
    const float* const pixels = plane.values;
    const int right = plane.right;
    const int bottom = plane.bottom;
    const int width = right + 1;
    const float scale = plane.scale;
    const float column = plane.column;
    const float row = plane.row;
    for (std::size_t k = 0; k < count; k++) {
        const float u = Bounded(column + x[k] * scale, right);
        const float v = Bounded(row - y[k] * scale, bottom);
        const int i = static_cast<int>(u);
        const int j = static_cast<int>(v);
        const int across = i < right ? 1 : 0;
        const int at = j * width + i;
        const int under = at + (j < bottom ? width : 0);
        const float f = u - static_cast<float>(i);
        const float g = v - static_cast<float>(j);
        const float above = (1 - f) * pixels[at] + f * pixels[at + across];
        const float below = (1 - f) * pixels[under] + f * pixels[under + across];
        values[k] = (1 - g) * above + g * below;
    }
}

} // namespace

const PictureLoops VEXA_LOOPS_TABLE = {Values, VEXA_LOOPS_NAME};

} // namespace vexa
