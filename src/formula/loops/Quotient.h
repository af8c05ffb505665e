// c a / b of floats a and b and a double c, computed in double precision and rounded to a float.
//
// Where a vector of doubles takes long to divide, the float is found without: as the sum of a float
// and what it lacks, from b's rough reciprocal. The sum is nearer than 2^-42 to c a / b, and so is
// what double precision gives. Both round to the same float unless a middle between two floats is
// as near, which is found out (A. Ziv, "Fast evaluation of elementary mathematical functions with
// correctly rounded last bit", 1991). Such vectors, one in some thousands, are divided after all.
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
constexpr std::size_t kQuotients = 16;

/// The lanes whose magnitude is normal and far from all that could overflow or underflow.
inline __mmask16 Moderate(__m512 values) {
    constexpr unsigned kLeast = (127U - 30) << 24, kMost = (127U + 30) << 24;
    typedef unsigned Sizes __attribute__((vector_size(64)));
    const Sizes sizes = ((Sizes)values << 1) - kLeast;
    return _mm512_cmplt_epu32_mask((__m512i)sizes, _mm512_set1_epi32(int(kMost - kLeast)));
}

/// Writes the quotients, and tells for which lanes that is certain; |c| is at most 2^20 and at
/// least 2^-20.
inline __mmask16 NearQuotient(__m512 a, __m512 b, float c, float rest, __m512& quotients) {
    const __m512 factor = _mm512_set1_ps(c);
    const __m512 rough = _mm512_maskz_rcp14_ps(0xffff, b);
    const __m512 lacks = _mm512_fnmadd_ps(b, rough, _mm512_set1_ps(1));
    const __m512 reciprocal = _mm512_fmadd_ps(lacks, rough, rough);
    const __m512 product = _mm512_mul_ps(factor, a);
    const __m512 low = _mm512_fmsub_ps(factor, a, product);
    const __m512 first = _mm512_mul_ps(product, reciprocal);
    __m512 left = _mm512_add_ps(_mm512_fnmadd_ps(first, b, product), low);
    left = _mm512_fmadd_ps(_mm512_set1_ps(rest), a, left);
    const __m512 second = _mm512_mul_ps(left, reciprocal);
    const __m512 sum = _mm512_add_ps(first, second);
    const __m512 error = _mm512_sub_ps(second, _mm512_sub_ps(sum, first));
    quotients = sum;
    const __m512 further = _mm512_fmadd_ps(error, _mm512_set1_ps(1 + 0x1p-16F), sum);
    const __mmask16 certain = _mm512_cmp_ps_mask(further, sum, _CMP_EQ_OQ);
    return certain & Moderate(sum) & Moderate(b);
}
#endif

/// to[i] = c a[i] / b[i].
void QuotientAsFloat(const void* a, const void* b, const void* c, void* to, std::size_t count) {
    const float* const x = static_cast<const float*>(a);
    const float* const y = static_cast<const float*>(b);
    float* const values = static_cast<float*>(to);
    const double factor = *static_cast<const double*>(c);
#if defined(__AVX512F__)
    const double size = __builtin_fabs(factor);
    if (size >= 0x1p-20 && size <= 0x1p20) {
        const auto high = static_cast<float>(factor);
        const auto low = static_cast<float>(factor - high);
        for (std::size_t i = 0; i < count; i += kQuotients) {
            __m512 quotients;
            const __mmask16 certain =
                NearQuotient(_mm512_loadu_ps(x + i), _mm512_loadu_ps(y + i), high, low, quotients);
            if (certain == 0xffff)
                _mm512_storeu_ps(values + i, quotients);
            else
                Divide(x + i, y + i, factor, values + i, kQuotients);
        }
        return;
    }
#endif
    Divide(x, y, factor, values, count);
}

} // namespace

} // namespace vexa::formula
