// SPDX-License-Identifier: GPL-3.0-or-later
// The operations of C's arithmetic and the exact functions of its maths library, each for one lane.
// Op (formula/Operations.h) defines the results that C leaves open.
#pragma once

#include <cstdint>

namespace vexa::formula {

namespace {

/// For a signed integer, the unsigned type of its size, in which arithmetic wraps around; for any
/// other type the type itself.
template<class T>
struct WrappingOf {
    using U = T;
};
template<>
struct WrappingOf<std::int32_t> {
    using U = std::uint32_t;
};
template<>
struct WrappingOf<std::int64_t> {
    using U = std::uint64_t;
};
template<class T>
using Wrapping = typename WrappingOf<T>::U;

template<class T>
constexpr bool kFloating = false;
template<>
constexpr bool kFloating<float> = true;
template<>
constexpr bool kFloating<double> = true;
template<class T>
constexpr bool kSigned = T(-1) < T(0);

using Bits = std::uint64_t;

template<class T>
inline T Copied(T a) {
    return a;
}
template<class T>
inline T Added(T a, T b) {
    return T(Wrapping<T>(a) + Wrapping<T>(b));
}
template<class T>
inline T Subtracted(T a, T b) {
    return T(Wrapping<T>(a) - Wrapping<T>(b));
}
template<class T>
inline T Multiplied(T a, T b) {
    return T(Wrapping<T>(a) * Wrapping<T>(b));
}
template<class T>
inline T Negated(T a) {
    if constexpr (kFloating<T>)
        return -a;
    else
        return T(Wrapping<T>(0) - Wrapping<T>(a));
}
template<class T>
inline T Divided(T a, T b) {
    if constexpr (kFloating<T>)
        return a / b;
    else if (b == 0)
        return 0;
    else if (kSigned<T> && b == T(-1))
        return Negated(a);
    else
        return T(a / b);
}
template<class T>
inline T RemainderOf(T a, T b) {
    return b == 0 || (kSigned<T> && b == T(-1)) ? 0 : T(a % b);
}

template<class T>
inline int LessThan(T a, T b) {
    return a < b;
}
template<class T>
inline int AtMost(T a, T b) {
    return a <= b;
}
template<class T>
inline int Same(T a, T b) {
    return a == b;
}
template<class T>
inline int Different(T a, T b) {
    return a != b;
}
template<class T>
inline T Selected(int condition, T a, T b) {
    return condition != 0 ? a : b;
}

template<class T>
inline T Both(T a, T b) {
    return a & b;
}
template<class T>
inline T Either(T a, T b) {
    return a | b;
}
template<class T>
inline T OneOf(T a, T b) {
    return a ^ b;
}
template<class T>
inline T Inverted(T a) {
    return ~a;
}
template<class T>
inline T ShiftedLeft(T a, int b) {
    return T(Wrapping<T>(a) << (unsigned(b) & (8 * sizeof(T) - 1)));
}
template<class T>
inline T ShiftedRight(T a, int b) {
    return T(a >> (unsigned(b) & (8 * sizeof(T) - 1)));
}

/// Converts a number as the conversions of Op do.
template<class To, class From>
inline To Converted(From value) {
    if constexpr (!kFloating<From> || kFloating<To>) {
        return static_cast<To>(value);
    } else {
        const double number = value == value ? double(value) : 0.0;
        if constexpr (kSigned<To> && sizeof(To) == 4) {
            const double low = number > -0x1p31 ? number : -0x1p31;
            return static_cast<To>(low < 0x1.fffffffcp30 ? low : 0x1.fffffffcp30);
        } else {
            const double low = number > -0x1p63 ? number : -0x1p63;
            const bool fits = low < 0x1p63;
            const auto whole = static_cast<std::int64_t>(fits ? low : 0.0);
            if constexpr (kSigned<To>) {
                return fits ? whole : INT64_MAX;
            } else if constexpr (sizeof(To) == 4) {
                return static_cast<To>(fits ? whole : INT64_MAX);
            } else {
                const bool upper = low < 0x1p64;
                const auto rest = static_cast<std::int64_t>(!fits && upper ? low - 0x1p63 : 0.0);
                return fits ? To(whole) : upper ? To(rest) + (To(1) << 63) : UINT64_MAX;
            }
        }
    }
}

template<class T>
inline int Narrowed(int a) {
    return static_cast<T>(a);
}

template<class T>
inline T Magnitude(T a) {
    return sizeof(T) == 4 ? T(__builtin_fabsf(float(a))) : T(__builtin_fabs(double(a)));
}
/// Returns `a` with the sign of `b`. A NaN's sign differs between processors, so a NaN counts as
/// positive.
template<class T>
inline T WithSign(T a, T b) {
    const T sign = b == b ? b : T(1);
    return sizeof(T) == 4 ? T(__builtin_copysignf(float(a), float(sign)))
                          : T(__builtin_copysign(double(a), double(sign)));
}
template<class T>
inline T FloorOf(T a) {
    return sizeof(T) == 4 ? T(__builtin_floorf(float(a))) : T(__builtin_floor(double(a)));
}
template<class T>
inline T CeilingOf(T a) {
    return sizeof(T) == 4 ? T(__builtin_ceilf(float(a))) : T(__builtin_ceil(double(a)));
}
template<class T>
inline T Truncated(T a) {
    return sizeof(T) == 4 ? T(__builtin_truncf(float(a))) : T(__builtin_trunc(double(a)));
}
template<class T>
inline T Rounded(T a) {
    // The largest number below 0.5. Adding 0.5 itself could round up to the next whole number.
    const T half = sizeof(T) == 4 ? T(0x1.fffffep-2) : T(0x1.fffffffffffffp-2);
    return Truncated(T(a + WithSign(half, a)));
}
template<class T>
inline T RoundedEven(T a) {
    return sizeof(T) == 4 ? T(__builtin_rintf(float(a))) : T(__builtin_rint(double(a)));
}
template<class T>
inline T Root(T a) {
    return sizeof(T) == 4 ? T(__builtin_sqrtf(float(a))) : T(__builtin_sqrt(double(a)));
}
template<class T>
inline T Larger(T a, T b) {
    return a >= b || b != b ? a : b;
}
template<class T>
inline T Smaller(T a, T b) {
    return a <= b || b != b ? a : b;
}
template<class T>
inline T Fused(T a, T b, T c) {
    return sizeof(T) == 4 ? T(__builtin_fmaf(float(a), float(b), float(c)))
                          : T(__builtin_fma(double(a), double(b), double(c)));
}
template<class T>
inline T ProductAndSumOf(T a, T b, T c) {
    return a * b + c;
}
template<class T>
inline T ProductLessOf(T a, T b, T c) {
    return a * b - c;
}
template<class T>
inline T NegativeLessOf(T a, T b, T c) {
    return -(a * b) - c;
}
template<class T>
inline T LessProductOf(T a, T b, T c) {
    return c - a * b;
}
template<class T>
inline T ProductOfThreeOf(T a, T b, T c) {
    return a * b * c;
}
inline float SumAsFloatOf(double a, double b, double c) {
    return static_cast<float>(a * b + c);
}
/// Returns the number that fpclassify returns on Linux.
template<class T>
inline int ClassOf(T a) {
    const T size = Magnitude(a);
    const T least = sizeof(T) == 4 ? T(0x1p-126) : T(0x1p-1022);
    const T most = sizeof(T) == 4 ? T(0x1.fffffep127) : T(0x1.fffffffffffffp1023);
    return size != size ? 0 : size > most ? 1 : size == 0 ? 2 : size < least ? 3 : 4;
}
template<class T>
inline int SignOf(T a) {
    return WithSign(T(1), a) < 0;
}

// The C library's results are exact here, and therefore the same on every machine.
inline float Next(float a, double b) {
    const float up = __builtin_nextafterf(a, __builtin_inff());
    const float down = __builtin_nextafterf(a, -__builtin_inff());
    const double number = a;
    const double equal = number == b ? b : number + b;
    return number < b ? up : number > b ? down : static_cast<float>(equal);
}
inline double Next(double a, double b) {
    return __builtin_nextafter(a, b);
}
inline double IeeeRemainderOf(double a, double b) {
    return __builtin_remainder(a, b);
}
inline double Scaled(double a, int b) {
    return __builtin_scalbn(a, b);
}
inline double ExponentOf(double a) {
    return __builtin_logb(a);
}

} // namespace

} // namespace vexa::formula
