// SPDX-License-Identifier: GPL-3.0-or-later
// Sums of equal steps, each addition rounded, without the chain of additions.
//
// Static, and without the standard library's templates, as the loops use it: an instance that uses
// wide vectors could be linked into code that runs on any machine.
#pragma once

#include "kits/support/RealtimeMark.h"

namespace vexa {

/// Returns what each addition of `step` to a sum near `start` adds once the sum is rounded.
VEXA_REALTIME static inline double RoundedStep(double start, double step) noexcept {
    return start + step - start;
}

/// True where start + i rounded, which is then exact, is what i rounded additions of `step` give,
/// for all i up to that of `last`. As long as a sum stays in one binade, the doubles there are a
/// grid, and adding `step` always adds the same multiple `rounded` of the grid's width. That is not
/// so if step lies in the middle of two multiples, where the rounding depends on the sum, nor for a
/// sum that comes down to the binade's edge.
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
