// SPDX-License-Identifier: GPL-3.0-or-later
// The quotient c a / b of floats a and b and a double c, computed in double precision and rounded
// to a float.
//
// Where the division of a vector of doubles takes long, the float is computed without it, from a
// rough reciprocal of b, as the sum of a float and a correction. The relative error of the sum is
// below 2^-42, and so is that of double precision. Both round to the same float unless the midpoint
// of two floats is equally near, which is detected (A. Ziv, "Fast evaluation of elementary
// mathematical functions with correctly rounded last bit", 1991). Such vectors, one in some
// thousands, are divided after all, with the rest of their group.
#pragma once

#include <cstddef>
#if defined(__AVX512F__)
#include <immintrin.h>
#endif

namespace vexa::formula {

namespace {

inline void Divide(const float* a, const float* b, double c, float* to, std::size_t count) {
    for (std::size_t i = 0; i < count; i++)
        to[i] = static_cast<float>(c * double(a[i]) / double(b[i]));
}

#if defined(__AVX512F__)
/// The number of quotients that are checked together, and that are computed in one vector.
constexpr std::size_t kGroup = 128, kQuotients = 16;

/// The check of a group of quotients: the smallest and largest magnitudes of quotients and
/// divisors, and the lanes whose float is uncertain.
struct QuotientCheck {
    __m512 least = _mm512_set1_ps(1), most = _mm512_set1_ps(1);
    __mmask16 uncertain = 0;

    /// Returns true if all quotients are certain, and all magnitudes are far from overflow and
    /// underflow.
    bool Passed() const {
        const __mmask16 small = _mm512_cmp_ps_mask(least, _mm512_set1_ps(0x1p-30F), _CMP_LT_OQ);
        const __mmask16 large = _mm512_cmp_ps_mask(most, _mm512_set1_ps(0x1p30F), _CMP_GT_OQ);
        return (uncertain | small | large) == 0;
    }
    void See(__m512 values) {
        constexpr int kLess = 0b1010, kMore = 0b1011; // of two magnitudes
        least = _mm512_maskz_range_ps(0xffff, least, values, kLess);
        most = _mm512_maskz_range_ps(0xffff, most, values, kMore);
    }
};

/// Writes kQuotients quotients and checks them. The factor is `c` + `rest`; its magnitude is
/// 2^-20..2^20.
inline void NearQuotients(const float* above, const float* below, __m512 c, __m512 rest, float* to,
                          QuotientCheck& check) {
    const __m512 a = _mm512_loadu_ps(above), b = _mm512_loadu_ps(below);
    const __m512 rough = _mm512_maskz_rcp14_ps(0xffff, b);
    const __m512 lacks = _mm512_fnmadd_ps(b, rough, _mm512_set1_ps(1));
    const __m512 reciprocal = _mm512_fmadd_ps(lacks, rough, rough);
    const __m512 product = c * a;
    const __m512 first = product * reciprocal;
    const __m512 lost = _mm512_fmadd_ps(rest, a, _mm512_fmsub_ps(c, a, product));
    const __m512 second = (_mm512_fnmadd_ps(first, b, product) + lost) * reciprocal;
    const __m512 sum = first + second;
    const __m512 error = second - (sum - first);
    const __m512 further = _mm512_fmadd_ps(error, _mm512_set1_ps(1 + 0x1p-16F), sum);
    check.uncertain |= _mm512_cmp_ps_mask(further, sum, _CMP_NEQ_UQ);
    check.See(sum);
    check.See(b);
    _mm512_storeu_ps(to, sum);
}
#endif

/// Computes to[i] = c a[i] / b[i].
void QuotientAsFloat(const void* a, const void* b, const void* c, void* to, std::size_t count) {
    const float* const x = static_cast<const float*>(a);
    const float* const y = static_cast<const float*>(b);
    float* const values = static_cast<float*>(to);
    const double factor = *static_cast<const double*>(c);
#if defined(__AVX512F__)
    const double size = __builtin_fabs(factor);
    if (size >= 0x1p-20 && size <= 0x1p20) {
        const auto high = static_cast<float>(factor);
        const __m512 main = _mm512_set1_ps(high);
        const __m512 rest = _mm512_set1_ps(static_cast<float>(factor - high));
        for (std::size_t i = 0; i < count; i += kGroup) {
            const std::size_t some = count - i < kGroup ? count - i : kGroup;
            QuotientCheck check;
            for (std::size_t k = i; k < i + some; k += kQuotients)
                NearQuotients(x + k, y + k, main, rest, values + k, check);
            if (!check.Passed())
                Divide(x + i, y + i, factor, values + i, some);
        }
        return;
    }
#endif
    Divide(x, y, factor, values, count);
}

} // namespace

} // namespace vexa::formula
