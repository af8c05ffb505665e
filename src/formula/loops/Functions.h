// SPDX-License-Identifier: GPL-3.0-or-later
// The functions of the maths library that formulas use most, beside those of
// kits/maths/Functions.h: sine, cosine and exp, for several vectors side by side.
//
// They have no branches, so that a loop over them becomes vector instructions. They use fused
// operations only where the product is exact (LessExact), as these give the same bits. A function
// of a type T is for Lanes as well as for double.
//
// The reductions are the usual ones (W. J. Cody and W. Waite, "Software Manual for the Elementary
// Functions").
#pragma once

#include "formula/loops/Lanes.h"
#include "kits/maths/Functions.h"
#include "kits/support/RealtimeMark.h"

#include <cstdint>

namespace vexa::formula {

namespace {

using kits::maths::ArcTangent;
using kits::maths::ArcTangent2;
using kits::maths::HyperbolicTangent;
using kits::maths::kHalfPi;
using kits::maths::kLargestQuotient;
using kits::maths::Logarithm;
using kits::maths::NearModulo;

constexpr double kInfinity = __builtin_inf();
/// Adding it to a number rounds the number to a whole one, which stands in the last bits of the
/// sum.
constexpr double kRounder = 0x1.8p52;

/// Computes c[0] + c[1] x + c[2] x^2 ...
template<class T, int count>
[[gnu::always_inline]] inline T Polynomial(T x, const double (&c)[count]) {
    T sum = x * c[count - 1] + c[count - 2];
#pragma GCC unroll 16
    for (int i = count - 3; i >= 0; i--)
        sum = sum * x + c[i];
    return sum;
}

// Pi in three parts. The first two have 33 and 20 bits. Up to kLongestWave their products with
// multiples of a half are therefore exact, and so are the differences from |x|.
constexpr double kPi1 = 0x1.921fb54400000p+1;
constexpr double kPi2 = 0x1.0b46000000000p-33;
constexpr double kPi3 = 0x1.1a62633145c07p-53;
/// The largest |x| for which the reduction is exact enough.
constexpr double kLongestWave = 0x1p20;

// The coefficients of (sin(r) / r - 1) / r^2 in powers of r^2, for r^2 up to (pi / 2)^2. The error
// of r + r^3 times the polynomial is below 1e-17.
constexpr double kSine[] = {-0.16666666666666666,    0.008333333333333316,
                            -0.00019841269841254974, 2.7557319219163234e-06,
                            -2.5052107616996182e-08, 1.6058977312464087e-10,
                            -7.643970296798572e-13,  2.7314447669863995e-15};

/// Returns sin(x), or cos(x) as the sine a quarter turn further on. The result is invalid where
/// BeyondWave sets the highest bit and, unless x is the value of a float, where WaveNearZero does.
template<bool cosine, class T>
[[gnu::always_inline]] inline T Wave(T x) {
    // The reduction is |x| = turns pi + r with |r| <= pi / 2, where `turns` is a whole number for
    // the sine, and a whole number and a half for the cosine. Every half turn changes the sign.
    // Only the last difference is rounded.
    constexpr double kToWhole = kRounder + (cosine ? 1 : 0);
    const T size = Size(x);
    const T shifted = (size * 0x1.45f306dc9c883p-2 - (cosine ? 0.5 : 0.0)) + kToWhole;
    const T whole = shifted - kToWhole;
    const T turns = cosine ? whole + 0.5 : whole;
    const T r = LessExact(LessExact(size, turns, kPi1), turns, kPi2) - turns * kPi3;
    const T q = r * r;
    const T sine = r + r * q * Polynomial(q, kSine);
    const auto sign = WordOf(shifted) << 63;
    return OfWord(WordOf(sine) ^ (cosine ? sign : sign ^ SignOfNumber(x)));
}
/// Returns words whose highest bit is 0 for |x| up to kLongestWave.
template<class T>
inline auto BeyondWave(T x) {
    return WordOf(kLongestWave - Size(x));
}
/// Returns words whose highest bit is 1 where the wave is so near 0 that two errors show in it: the
/// digits of pi beyond the three parts, and the rounding of the third part's product. Both are
/// below 2^-106 |x|. Up to kLongestWave no wave of a float comes nearer to 0 than 2^-43 |x|.
template<class T>
inline auto WaveNearZero(T x, T wave) {
    return WordOf(Size(wave) * 0x1p50 - Size(x));
}

/// log(2) in two parts, of which the first has 32 bits.
constexpr double kLog2High = 0x1.62e42fee00000p-1;
constexpr double kLog2Low = 0x1.a39ef35793c76p-33;

/// The reduced argument of an exponential, as ReduceFinely returns it.
template<class T>
struct Power {
    T shifted, part;
};

/// For |x| up to this, exp(x) and the power of 2 in it are normal numbers.
constexpr double kMostExponential = 708;
/// Below this exp(x) is 0.
constexpr double kNoExponential = -746;

// The coefficients of (exp(r) - 1 - r) / r^2 in powers of r, for |r| up to log(2) / 32. The error
// of r^2 times the polynomial is below 3e-17.
constexpr double kFineExponential[] = {0.5, 0.1666666666530169, 0.04166666666496045,
                                       0.008333449701253456, 0.0013889034348599464};
/// The fraction bits of 2^(j / 16), less j in the upper four of them.
constexpr Word kRoots[kTable] = {
    0x0000000000000000, 0xffffb5586cf9890f, 0xffff72b83c7d517b, 0xffff387a6e756238,
    0xffff06fe0a31b715, 0xfffedea64c123422, 0xfffebfdad5362a27, 0xfffeab07dd485429,
    0xfffea09e667f3bcd, 0xfffea11473eb0187, 0xfffeace5422aa0db, 0xfffec49182a3f090,
    0xfffee89f995ad3ad, 0xffff199bdd85529c, 0xffff5818dcfba487, 0xffffa4afa2a490da};

/// Reduces x to exp(x) = 2^(n / 16) (1 + part). The last bits of `shifted` hold n + 16 * 1023: the
/// lowest four are n modulo 16, and the bits above them are the biased exponent of the power of 2.
template<class T>
VEXA_REALTIME [[gnu::always_inline]] inline Power<T> ReduceFinely(T x) {
    constexpr double kToSixteenths = kRounder + kTable * 1023;
    const T shifted = x * 0x1.71547652b82fep4 + kToSixteenths;
    const T n = shifted - kToSixteenths;
    const T r = LessExact(x, n, kLog2High / kTable) - n * (kLog2Low / kTable);
    return {shifted, r + r * r * Polynomial(r, kFineExponential)};
}

/// Returns exp(x). The result is invalid where BeyondExponential sets the highest bit.
template<class T>
[[gnu::always_inline]] inline T NearExponential(T x) {
    const Power<T> power = ReduceFinely(x);
    const auto steps = WordOf(power.shifted);
    const T scale = OfWord((steps << 48) + Looked(kRoots, steps));
    return ZeroWhere(x < kNoExponential, (power.part + 1) * scale);
}
/// Returns words whose highest bit is 0 where |x| <= kMostExponential or x < kNoExponential.
template<class T>
inline auto BeyondExponential(T x) {
    return WordOf(kMostExponential - ZeroWhere(x < kNoExponential, Size(x)));
}

/// Returns exp(x) for every x.
inline double Exponential(double x) {
    const double low = x < kNoExponential ? kNoExponential : x;
    const Power<double> power = ReduceFinely(low > 710 ? 710 : low);
    const Word steps = WordOf(power.shifted);
    // 2^(n / 16) as a product of three factors, because a number may not hold its exponent.
    const Word j = steps % kTable;
    const double root = OfWord(kRoots[j] + (j << 48) + (Word(1023) << 52));
    const auto n = static_cast<std::int64_t>(steps - WordOf(kRounder));
    const std::int64_t k = (n >> 4) - 1023;
    const std::int64_t half = k >> 1;
    const double first = OfWord(Word(half + 1023) << 52);
    const double second = OfWord(Word(k - half + 1023) << 52);
    const double value = (power.part + 1) * root * first * second;
    return x == x ? value : x;
}

} // namespace

} // namespace vexa::formula
