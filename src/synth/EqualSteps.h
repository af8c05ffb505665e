// SPDX-License-Identifier: GPL-3.0-or-later
// Sums of equal steps, each addition rounded, without the chain of additions.
//
// The functions are static and use no templates of the standard library because the loops include
// them: an instance compiled for wide vectors could otherwise be linked into code that runs on any
// machine.
#pragma once

#include "kits/support/RealtimeMark.h"

namespace vexa {

/// Returns the effective step: the increment that adding `step` to `start` makes after rounding.
VEXA_REALTIME static inline double RoundedStep(double start, double step) noexcept {
    return start + step - start;
}

/// Returns true if start + i * rounded, which is then exact, equals the result of i rounded
/// additions of `step`, for all i up to the sum `last`. Within one binade the doubles form a
/// uniform grid, and adding `step` always adds the same multiple `rounded` of the grid's spacing.
/// Two cases are excluded: a step halfway between two multiples, where the rounding depends on the
/// sum, and a sum that comes down to the binade's edge.
VEXA_REALTIME static inline bool AddsTheSame(double start, double step, double rounded,
                                             double last) noexcept {
    if (step == 0)
        return true;
    using Bits = unsigned long long;
    constexpr Bits kMantissa = (Bits{1} << 52) - 1;
    const Bits bits = __builtin_bit_cast(Bits, start);
    const Bits lastBits = __builtin_bit_cast(Bits, last);
    if ((bits & ~kMantissa) != (lastBits & ~kMantissa) || (lastBits & kMantissa) == 0)
        return false;
    const double next = __builtin_bit_cast(double, bits + 1);
    return 2 * __builtin_fabs(step - rounded) < __builtin_fabs(next - start);
}

} // namespace vexa
