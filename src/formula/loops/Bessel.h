// SPDX-License-Identifier: GPL-3.0-or-later
// Bessel functions of integer orders, for one number. Far from 0 they are the sums of H. Hankel's
// asymptotic expansion, whose terms fall below 1e-17 there. Near 0 J. C. P. Miller's backward
// recurrence gives J of all orders at once, and Y_0 and Y_1 are Neumann's series of these (M.
// Abramowitz and I. Stegun, "Handbook of Mathematical Functions", 9.1.88, 9.2.5 ff., 9.12). The
// error is below 1e-14 of the larger of the value and 1 / sqrt(1 + |x|).
#pragma once

#include "formula/loops/Functions.h"

namespace vexa::formula {

namespace {

/// The values of J and Y of one order.
struct BesselPair {
    double j, y;
};

constexpr double kFar = 25;

/// Returns J and Y of order 0 or 1, for x >= kFar. `sine` and `cosine` are those of x.
inline BesselPair FarPair(int order, double x, double sine, double cosine) {
    // The terms are a_k / x^k with a_k = a_(k-1) (4 order^2 - (2k - 1)^2) / 8k. They go alternately
    // to the sums P and Q.
    double p = 1, q = 0, term = 1;
    for (int k = 1; k <= 44; k++) {
        const double odd = 2 * k - 1;
        term *= (4 * order - odd * odd) / (8 * k * x);
        const int quarter = k & 3;
        (quarter == 0 || quarter == 2 ? p : q) += quarter < 2 ? term : -term;
        if (__builtin_fabs(term) < 1e-18)
            break;
    }
    // The cosine and the sine of x - pi / 4 - order pi / 2.
    const double sum = (cosine + sine) * 0x1.6a09e667f3bcdp-1;
    const double difference = (sine - cosine) * 0x1.6a09e667f3bcdp-1;
    const double c = order == 0 ? sum : difference;
    const double s = order == 0 ? difference : -sum;
    const double size = __builtin_sqrt(1 / (kHalfPi * x));
    return {size * (p * c - q * s), size * (p * s + q * c)};
}

/// J_order(x) for x > 0, and Y_0(x) and Y_1(x), which are valid for x < kFar only.
struct NearBessel {
    double j, y0, y1;
};

inline NearBessel NearOf(int order, double x) {
    // Euler's constant.
    constexpr double kGamma = 0x1.2788cfc6fb619p-1;
    const int top = order > static_cast<int>(x) ? order : static_cast<int>(x);
    // From order `top` to order `n`, J falls by a factor of more than 1e17.
    int n = (top + 24 + static_cast<int>(__builtin_sqrt(40.0 * (top + 1)))) & ~1;
    double above = 0, here = 1e-300, wanted = 0;
    // `norm` sums J_0 + 2 (J_2 + J_4 ...), which is 1 for the true values. `series` sums (-1)^k
    // J_2k / k, and `slope` the derivatives of these terms.
    double norm = 0, series = 0, slope = 0;
    for (; n > 0; n--) {
        if (n == order)
            wanted = here;
        // `here` is J_n times a factor that is the same for all n.
        const double below = 2 * n / x * here - above;
        if ((n & 1) == 0) {
            const int k = n / 2;
            const double sign = (k & 1) != 0 ? -1.0 : 1.0;
            norm += 2 * here;
            series += sign * here / k;
            slope += sign * (below - above) / n;
        }
        above = here;
        here = below;
        if (__builtin_fabs(here) > 1e250) {
            here *= 1e-250;
            above *= 1e-250;
            norm *= 1e-250;
            series *= 1e-250;
            slope *= 1e-250;
            wanted *= 1e-250;
        }
    }
    norm += here;
    if (order == 0)
        wanted = here;
    const double j0 = here / norm;
    const double j1 = above / norm;
    const double log = Logarithm(x / 2) + kGamma;
    return {wanted / norm, (log * j0 - 2 * series / norm) / kHalfPi,
            (log * j1 - j0 / x + 2 * slope / norm) / kHalfPi};
}

inline bool OddOf(int order) {
    return (order & 1) != 0;
}

/// Returns J of `order`, -100..100. `sine` and `cosine` are those of |x|, and are used for |x| >=
/// kFar only.
inline double BesselJOf(int order, double x, double sine, double cosine) {
    if (x != x)
        return x;
    const int n = order < 0 ? -order : order;
    const bool negative = OddOf(n) && (order < 0) != (__builtin_signbit(x) != 0);
    const double size = __builtin_fabs(x);
    double value;
    if (size == 0)
        value = n == 0 ? 1 : 0;
    else if (size == kInfinity)
        value = 0;
    else if (size < kFar || n > size)
        // The first term of the power series, because the steps of the recurrence would overflow.
        value = size < 1e-8 ? (n == 0   ? 1
                               : n == 1 ? size / 2
                               : n == 2 ? size * size / 8
                                        : 0)
                            : NearOf(n, size).j;
    else {
        value = FarPair(0, size, sine, cosine).j;
        double next = FarPair(1, size, sine, cosine).j;
        for (int k = 1; k <= n; k++) {
            const double after = 2 * k / size * next - value;
            value = next;
            next = after;
        }
    }
    return negative ? -value : value;
}

/// Returns Y of `order`, -100..100. `sine` and `cosine` are those of x, and are used for x >= kFar
/// only.
inline double BesselYOf(int order, double x, double sine, double cosine) {
    if (x != x)
        return x;
    const int n = order < 0 ? -order : order;
    if (x < 0)
        return __builtin_nan("");
    const bool negative = OddOf(n) && order < 0;
    double value, next;
    if (x == 0) {
        value = -kInfinity;
        return negative ? -value : value;
    }
    if (x == kInfinity)
        return 0;
    if (x < kFar) {
        const bool tiny = x < 1e-8;
        const NearBessel near = NearOf(0, tiny ? 1e-8 : x);
        // log(x) - (log(2) - gamma) is log(x / 2) + gamma, without halving x.
        value = tiny ? (Logarithm(x) - 0x1.dadb014541eb2p-4) / kHalfPi : near.y0;
        next = tiny ? -1 / (kHalfPi * x) : near.y1;
    } else {
        value = FarPair(0, x, sine, cosine).y;
        next = FarPair(1, x, sine, cosine).y;
    }
    for (int k = 1; k <= n; k++) {
        const double after = next == -kInfinity ? next : 2 * k / x * next - value;
        value = next;
        next = after;
    }
    return negative ? -value : value;
}

} // namespace

} // namespace vexa::formula
