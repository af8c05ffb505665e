// SPDX-License-Identifier: GPL-3.0-or-later
// The functions of the maths library that rendering calls most, for one number each, with the same
// bits on every machine.
//
// They have neither branches, so a loop over them becomes vector instructions, nor fused
// operations. Phases may be large here; formulas have their own forms for whole vectors
// (formula/loops). They are compiled into the loops of each instruction set, so every file that
// includes them has its own copy. The reductions are the usual ones (W. J. Cody and W. Waite,
// "Software Manual for the Elementary Functions"; FDLIBM for log); each table of coefficients says
// what it approximates and with what error.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstdint>

namespace kits::maths {

namespace {

using Word = std::uint64_t;

constexpr double kInfinity = __builtin_inf();
/// Adding this constant rounds a number to an integer, which is then in the low bits of the sum.
constexpr double kRounder = 0x1.8p52;
constexpr double kHalfPi = 0x1.921fb54442d18p0;
constexpr double kHalfPiRest = 0x1.1a62633145c07p-54;

VEXA_REALTIME inline Word WordOf(double value) {
    return __builtin_bit_cast(Word, value);
}
VEXA_REALTIME inline double OfWord(Word word) {
    return __builtin_bit_cast(double, word);
}

/// Computes c[0] + c[1] x + c[2] x^2 ...
template<int count>
VEXA_REALTIME inline double Polynomial(double x, const double (&c)[count]) {
    double sum = c[count - 1];
    for (int i = count - 2; i >= 0; i--)
        sum = sum * x + c[i];
    return sum;
}

// Pi in three parts. The first two have 20 bits each, so that their products with integers and
// half-integers below 2^32 are exact. For numbers up to 1e6 the part of pi that the three leave out
// contributes less than 2^-76.
constexpr double kPi1 = 0x1.921fcp+1;
constexpr double kPi2 = -0x1.5777ap-20;
constexpr double kPi3 = -0x1.73dcb3b399d74p-42;
/// Up to this size the error of a wave is still below 1e-15, although near its zeros that is more
/// than one unit in the last place. FarWaves.h serves larger numbers.
constexpr double kLongestPhase = 1e10;

// The polynomial in r^2 for (sin(r) / r - 1) / r^2, up to (pi / 2)^2. The error of r + r^3 times it
// is below 1e-17.
constexpr double kSine[] = {-0.16666666666666666,    0.008333333333333316,
                            -0.00019841269841254974, 2.7557319219163234e-06,
                            -2.5052107616996182e-08, 1.6058977312464087e-10,
                            -7.643970296798572e-13,  2.7314447669863995e-15};

/// Returns sin(x), or cos(x) as the sine of x + pi / 2, for |x| <= kLongestPhase.
template<bool cosine>
inline double Wave(double x) {
    // x = turns pi + r with |r| <= pi / 2, where `turns` is an integer for the sine and a
    // half-integer for the cosine. Each half turn changes the sign. Only the last subtraction
    // rounds.
    const double shifted = (x * 0x1.45f306dc9c883p-2 - (cosine ? 0.5 : 0.0)) + kRounder;
    const double whole = shifted - kRounder;
    const double turns = cosine ? whole + 0.5 : whole;
    const double r = ((x - turns * kPi1) - turns * kPi2) - turns * kPi3;
    const double q = r * r;
    const double sine = r + r * q * Polynomial(q, kSine);
    const Word sign = (WordOf(shifted) + (cosine ? 1 : 0)) << 63;
    // The sine of -0 is -0, but x - 0 pi is +0.
    return !cosine && x == 0 ? x : OfWord(WordOf(sine) ^ sign);
}

/// The limit of NearModulo: the product of a quotient below it and half of a number's bits is
/// exact.
constexpr double kLargestQuotient = 0x1p26;

/// Returns fmod(x, y) for |x / y| < kLargestQuotient and a y that is not subnormal. The result is
/// exact, because all products and differences are.
inline double NearModulo(double x, double y) {
    const double size = __builtin_fabs(x);
    const double step = __builtin_fabs(y);
    const double quotient = __builtin_trunc(size / step);
    const double high = OfWord(WordOf(step) & ~Word(0x7ffffff));
    const double rest = (size - quotient * high) - quotient * (step - high);
    // The quotient may have been rounded up to an integer that is 1 too large.
    const double positive = rest < 0 ? rest + step : rest;
    return __builtin_copysign(positive < step ? positive : positive - step, x);
}

// The polynomial in r for (exp(r) - 1 - r) / r^2, |r| up to log(2) / 2. The error of r^2 times it
// is below 1e-17.
constexpr double kExponential[] = {
    0.5000000000000001,     0.16666666666666669,    0.041666666666623824,   0.008333333333330039,
    0.0013888888917367081,  0.00019841269863171557, 2.4801521057868204e-05, 2.7557268276905696e-06,
    2.7620201591031547e-07, 2.5100472505694996e-08};
/// log(2) in two parts, the first with 32 bits.
constexpr double kLog2High = 0x1.62e42fee00000p-1;
constexpr double kLog2Low = 0x1.a39ef35793c76p-33;

/// The result of the reduction exp(x) = 2^k (1 + part); k is in the low bits of `shifted`.
struct Power {
    double shifted, part;
};

VEXA_REALTIME inline Power Reduce(double x) {
    const double shifted = x * 0x1.71547652b82fep0 + kRounder;
    const double k = shifted - kRounder;
    const double r = (x - k * kLog2High) - k * kLog2Low;
    return {shifted, r + r * r * Polynomial(r, kExponential)};
}

/// Below this exp(x) is 0.
constexpr double kNoExponential = -746;

/// Returns exp(x) for every x.
VEXA_REALTIME inline double Exponential(double x) {
    const double low = x < kNoExponential ? kNoExponential : x;
    const Power power = Reduce(low > 710 ? 710 : low);
    // 2^k as two factors, because k may exceed the range of a double's exponent.
    const auto k = static_cast<std::int64_t>(WordOf(power.shifted) - WordOf(kRounder));
    const std::int64_t half = k >> 1;
    const double first = OfWord(Word(half + 1023) << 52);
    const double second = OfWord(Word(k - half + 1023) << 52);
    const double value = (1 + power.part) * first * second;
    return x == x ? value : x;
}

inline double HyperbolicTangent(double x) {
    const double size = __builtin_fabs(x);
    // From 20 on tanh is 1 in double.
    const Power power = Reduce(2 * (size < 20 ? size : 20));
    const double factor = OfWord((WordOf(power.shifted) + 1023) << 52);
    // t is exp(2 |x|) - 1.
    const double t = factor * power.part + (factor - 1);
    const double value = __builtin_copysign(t / (t + 2), x);
    return x == x ? value : x;
}

// The polynomial in s^2 for (log((1 + s) / (1 - s)) / s - 2) / s^2, up to ((sqrt(2) - 1) / (sqrt(2)
// + 1))^2. The error of s^3 times it is below 1e-18.
constexpr double kLogarithm[] = {0.666666666666667,  0.3999999999989938,  0.28571428626031065,
                                 0.2222221112572281, 0.18182889786191042, 0.15331699633543858,
                                 0.14616721179861816};

VEXA_REALTIME inline double Logarithm(double x) {
    // x = 2^k (1 + f) with 1 + f between sqrt(1/2) and sqrt(2).
    const bool tiny = x < 0x1p-1022;
    const double scaled = tiny ? x * 0x1p54 : x;
    constexpr Word kRoot = 0x3fe6a09e667f3bcd; // These are the bits of sqrt(1/2).
    const Word above = WordOf(scaled) - kRoot;
    const auto steps = static_cast<std::int64_t>(above) >> 52;
    const double f = OfWord((above & 0xfffffffffffff) + kRoot) - 1;
    const double k = OfWord(WordOf(kRounder) + Word(steps)) - kRounder - (tiny ? 54 : 0);
    const double s = f / (2 + f);
    const double z = s * s;
    const double half = 0.5 * f * f;
    const double rest = s * (half + z * Polynomial(z, kLogarithm));
    const double value = k * kLog2High - ((half - (rest + k * kLog2Low)) - f);
    const double outside = x == 0 ? -kInfinity : x > 0 ? x : __builtin_nan("");
    return x > 0 && x < kInfinity ? value : x == x ? outside : x;
}

// The polynomial in t^2 for (atan(t) / t - 1) / t^2, t up to tan(pi / 8). The error of t + t^3
// times it is below 1e-17.
constexpr double kArcus[] = {-0.3333333333333333,  0.19999999999995513,  -0.1428571428466482,
                             0.11111111015117626,  -0.09090904572487347, 0.07692183059894114,
                             -0.06664509603255386, 0.05858132894427922,  -0.05085365922344248,
                             0.03922923713835943,  -0.01917392228554793};

/// Returns atan(up / across), 0 to pi / 2, for finite arguments of at least 0; 0 if both are 0.
VEXA_REALTIME inline double Angle(double up, double across) {
    const bool steep = up > across;
    const double small = steep ? across : up;
    const double large = steep ? up : across;
    // The angle is measured from the axis or the diagonal, whichever is nearer, so that |t| <=
    // tan(pi / 8).
    const bool diagonal = small > large * 0x1.a827999fcef32p-2;
    const double nominator = diagonal ? small - large : small;
    const double denominator = diagonal ? small + large : large;
    const double t = nominator / (denominator == 0 ? 1 : denominator);
    const double q = t * t;
    const double arcus = t + t * q * Polynomial(q, kArcus);
    // kHalfPiRest, the part of pi / 2 that kHalfPi lacks, is added to the smaller summand.
    const double near = diagonal ? kHalfPi / 2 + (arcus + kHalfPiRest / 2) : arcus;
    const double complement =
        diagonal ? kHalfPi / 2 - (arcus - kHalfPiRest / 2) : kHalfPi - (arcus - kHalfPiRest);
    return steep ? complement : near;
}

inline double ArcTangent(double x) {
    const double size = __builtin_fabs(x);
    const double value = Angle(size < 0x1p1000 ? size : 0x1p1000, 1);
    return x == x ? __builtin_copysign(value, x) : x;
}

inline double ArcTangent2(double y, double x) {
    const double xsize = __builtin_fabs(x);
    const double ysize = __builtin_fabs(y);
    // An infinite coordinate next to a finite one counts as 1 next to 0, and two infinite ones
    // count as 1 and 1. Large numbers are scaled down, so that their sum is finite.
    const bool flat = xsize == kInfinity;
    const bool high = ysize == kInfinity;
    const double beside = high ? 0 : xsize;
    const double across = flat ? 1 : beside;
    const double above = flat ? 0 : ysize;
    const double up = high ? 1 : above;
    const double larger = across > up ? across : up;
    const double scale = larger > 0x1p1000 ? 0x1p-64 : 1.0;
    const double first = Angle(up * scale, across * scale);
    const bool left = static_cast<std::int64_t>(WordOf(x)) < 0;
    const double value = left ? 2 * kHalfPi - (first - 2 * kHalfPiRest) : first;
    const double signedValue = __builtin_copysign(value, y);
    const double numberOrY = y == y ? signedValue : y;
    return x == x ? numberOrY : x;
}

} // namespace

} // namespace kits::maths
