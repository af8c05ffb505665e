// SPDX-License-Identifier: GPL-3.0-or-later
// Functions of the C maths library over arrays, the same bits on every machine.
//
// They are SLEEF's deterministic forms, which use no fused operations; only the payload of a NaN
// may differ between instruction sets. The C library's own differ between processors and versions.
#pragma once

#include <cstddef>
#include <span>

namespace kits {

/// The loops for one instruction set; each name is that of the function in C. The count is a
/// multiple of kGroup, and the arrays do not overlap. Any thread, real-time safe.
struct VectorMaths {
    static constexpr std::size_t kGroup = 8;

    using OfOne = void (*)(const double* x, double* values, std::size_t count);
    using OfTwo = void (*)(const double* x, const double* y, double* values, std::size_t count);

    /// These are exact within 1 ulp; erfc within 1.5.
    OfOne sin, cos, tan, asin, acos, sinh, cosh, asinh, acosh, atanh, exp2, expm1, log2, log10,
        log1p, cbrt, erf, erfc, tgamma, lgamma;
    OfTwo pow, hypot;
};

/// Returns one for each instruction set of vexa_loops that this architecture has, in its order; the
/// first runs on every machine.
std::span<const VectorMaths* const> AllVectorMaths();

} // namespace kits
