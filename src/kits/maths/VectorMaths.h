// SPDX-License-Identifier: GPL-3.0-or-later
// Functions of the C maths library over arrays, with the same bits on every machine.
//
// They are SLEEF's deterministic forms, which use no fused operations; only the payload of a NaN
// may differ between instruction sets. The C library's own functions differ between processors and
// versions.
#pragma once

#include <cstddef>
#include <span>

namespace kits {

/// The loops for one instruction set, named as the functions in C. The count must be a multiple of
/// kGroup, and the arrays must not overlap. Any thread, real-time safe.
struct VectorMaths {
    static constexpr std::size_t kGroup = 8;

    using OfOne = void (*)(const double* x, double* values, std::size_t count);
    using OfTwo = void (*)(const double* x, const double* y, double* values, std::size_t count);

    /// Exact within 1 ulp, erfc within 1.5.
    OfOne sin, cos, tan, asin, acos, sinh, cosh, asinh, acosh, atanh, exp2, expm1, log2, log10,
        log1p, cbrt, erf, erfc, tgamma, lgamma;
    OfTwo pow, hypot;
};

/// Returns the loops for each instruction set of vexa_loops on this architecture, in its order. The
/// first runs on every machine.
std::span<const VectorMaths* const> AllVectorMaths();

} // namespace kits
