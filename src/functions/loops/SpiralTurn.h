// SPDX-License-Identifier: GPL-3.0-or-later
// Computes the place of a point on its turn of the spiral.
#pragma once

#include "kits/maths/Functions.h"
#include "kits/support/RealtimeMark.h"

namespace vexa {

namespace {

/// Returns the angle of the point as a fraction of a turn, 0..1, from the positive x axis. The
/// angle is computed in double precision and rounded to float.
VEXA_REALTIME inline float TurnOf(float x, float y) {
    constexpr float kLargest = 0x1.fffffep127F;
    const float xsize = __builtin_fabsf(x);
    const float ysize = __builtin_fabsf(y);
    // Infinity counts as the largest number, so that two infinities have a quotient.
    const double across = xsize > kLargest ? kLargest : xsize;
    const double up = ysize > kLargest ? kLargest : ysize;
    const double first = kits::maths::Angle(up, across);
    // The angle of (-x, -y) lies between -pi and pi.
    const double upper = __builtin_signbitf(x) ? first : 2 * kits::maths::kHalfPi - first;
    const float angle = __builtin_copysignf(static_cast<float>(upper), -y);
    return static_cast<float>(angle / 6.28318530718 + 0.5);
}

} // namespace

} // namespace vexa
