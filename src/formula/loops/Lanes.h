// SPDX-License-Identifier: GPL-3.0-or-later
// Lanes are several vectors of doubles side by side. The vectors are computed independently of each
// other, which keeps a processor busy that starts two operations per cycle and takes four cycles
// for each. A function that is a template of a number type T works for Lanes as well as for double.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstddef>
#include <cstdint>
#if defined(__FMA__)
#include <immintrin.h>
#endif

namespace vexa::formula {

namespace {

#if defined(__AVX512F__)
constexpr std::size_t kVectorBytes = 64;
constexpr int kVectors = 2;
#elif defined(__AVX__)
constexpr std::size_t kVectorBytes = 32;
constexpr int kVectors = 4;
#else
constexpr std::size_t kVectorBytes = 16;
constexpr int kVectors = 4;
#endif
using Word = std::uint64_t;
typedef double NumberVector __attribute__((vector_size(kVectorBytes)));
typedef Word WordVector __attribute__((vector_size(kVectorBytes)));
typedef std::int64_t TruthVector __attribute__((vector_size(kVectorBytes)));

template<class V>
struct Several {
    V v[kVectors];

    /// Returns the results of a function for each of the vectors.
    template<class R, class F, class... Others>
    static Several<R> Of(F f, Others... of) {
        Several<R> result;
#pragma GCC unroll 4
        for (int k = 0; k < kVectors; k++)
            result.v[k] = f(of.v[k]...);
        return result;
    }
};
using Lanes = Several<NumberVector>;
using Words = Several<WordVector>;
using Truths = Several<TruthVector>;
/// The number of doubles in all vectors together.
constexpr std::size_t kNumbers = kVectors * kVectorBytes / sizeof(double);

inline Lanes operator+(Lanes a, Lanes b) {
    return Lanes::Of<NumberVector>([](NumberVector x, NumberVector y) { return x + y; }, a, b);
}
inline Lanes operator-(Lanes a, Lanes b) {
    return Lanes::Of<NumberVector>([](NumberVector x, NumberVector y) { return x - y; }, a, b);
}
inline Lanes operator*(Lanes a, Lanes b) {
    return Lanes::Of<NumberVector>([](NumberVector x, NumberVector y) { return x * y; }, a, b);
}
inline Lanes operator+(Lanes a, double b) {
    return Lanes::Of<NumberVector>([b](NumberVector x) { return x + b; }, a);
}
inline Lanes operator-(Lanes a, double b) {
    return Lanes::Of<NumberVector>([b](NumberVector x) { return x - b; }, a);
}
inline Lanes operator-(double a, Lanes b) {
    return Lanes::Of<NumberVector>([a](NumberVector x) { return a - x; }, b);
}
inline Lanes operator*(Lanes a, double b) {
    return Lanes::Of<NumberVector>([b](NumberVector x) { return x * b; }, a);
}
/// Returns c - a b. The product must be exact, so that a fused operation gives the same bits.
inline Lanes LessExact(Lanes c, Lanes a, double b) {
    return Lanes::Of<NumberVector>(
        [b](NumberVector z, NumberVector x) {
#if defined(__AVX512F__)
            return (NumberVector)_mm512_fnmadd_pd((__m512d)x, _mm512_set1_pd(b), (__m512d)z);
#elif defined(__FMA__)
            return (NumberVector)_mm256_fnmadd_pd((__m256d)x, _mm256_set1_pd(b), (__m256d)z);
#else
            return z - x * b;
#endif
        },
        c, a);
}
inline Truths operator<(Lanes a, double b) {
    return Lanes::Of<TruthVector>([b](NumberVector x) { return x < b; }, a);
}
inline Words operator+(Words a, Word b) {
    return Words::Of<WordVector>([b](WordVector x) { return x + b; }, a);
}
inline Words operator+(Words a, Words b) {
    return Words::Of<WordVector>([](WordVector x, WordVector y) { return x + y; }, a, b);
}
inline Words operator<<(Words a, int b) {
    return Words::Of<WordVector>([b](WordVector x) { return x << b; }, a);
}
inline Words operator^(Words a, Words b) {
    return Words::Of<WordVector>([](WordVector x, WordVector y) { return x ^ y; }, a, b);
}
inline Words operator|(Words a, Words b) {
    return Words::Of<WordVector>([](WordVector x, WordVector y) { return x | y; }, a, b);
}

inline Words WordOf(Lanes values) {
    return Lanes::Of<WordVector>([](NumberVector x) { return (WordVector)x; }, values);
}
inline Lanes OfWord(Words words) {
    return Words::Of<NumberVector>([](WordVector x) { return (NumberVector)x; }, words);
}
inline Lanes Size(Lanes values) {
    return Lanes::Of<NumberVector>(
        [](NumberVector x) { return (NumberVector)((WordVector)x & ~(Word(1) << 63)); }, values);
}
inline Words SignOfNumber(Lanes values) {
    return Lanes::Of<WordVector>([](NumberVector x) { return (WordVector)x & Word(1) << 63; },
                                 values);
}
/// Returns 0 where the condition holds, and the value elsewhere.
inline Lanes ZeroWhere(Truths condition, Lanes value) {
    return Lanes::Of<NumberVector>(
        [](TruthVector c, NumberVector x) { return (NumberVector)((TruthVector)x & ~c); },
        condition, value);
}

constexpr int kTable = 16;
/// Looks up the words of a table. The last four bits of each index count.
inline Words Looked(const Word (&table)[kTable], Words indices) {
    return Words::Of<WordVector>(
        [&table](WordVector index) {
#if defined(__AVX512F__)
            WordVector low, high;
            __builtin_memcpy(&low, table, sizeof low);
            __builtin_memcpy(&high, table + kTable / 2, sizeof high);
            return (WordVector)_mm512_permutex2var_epi64((__m512i)low, (__m512i)index,
                                                         (__m512i)high);
#else
            WordVector looked;
#pragma GCC unroll 4
            for (std::size_t i = 0; i < kVectorBytes / sizeof(Word); i++)
                looked[i] = table[index[i] % kTable];
            return looked;
#endif
        },
        indices);
}

// The same functions for one number.
inline Word Looked(const Word (&table)[kTable], Word index) {
    return table[index % kTable];
}
VEXA_REALTIME inline Word WordOf(double value) {
    return __builtin_bit_cast(Word, value);
}
VEXA_REALTIME inline double OfWord(Word word) {
    return __builtin_bit_cast(double, word);
}
inline double LessExact(double c, double a, double b) {
    return c - a * b;
}
inline double Size(double value) {
    return __builtin_fabs(value);
}
inline Word SignOfNumber(double value) {
    return WordOf(value) & Word(1) << 63;
}
inline double ZeroWhere(bool condition, double value) {
    return condition ? 0 : value;
}

inline Lanes Load(const double* from) {
    Lanes lanes;
#pragma GCC unroll 4
    for (std::size_t k = 0; k < kVectors; k++)
        __builtin_memcpy(&lanes.v[k], from + k * kNumbers / kVectors, kVectorBytes);
    return lanes;
}
inline Lanes Load(const float* from) {
    typedef float Narrow __attribute__((vector_size(kVectorBytes / 2)));
    Lanes lanes;
#pragma GCC unroll 4
    for (std::size_t k = 0; k < kVectors; k++) {
        Narrow narrow;
        __builtin_memcpy(&narrow, from + k * kNumbers / kVectors, sizeof narrow);
        lanes.v[k] = __builtin_convertvector(narrow, NumberVector);
    }
    return lanes;
}
inline void Store(Lanes lanes, double* to) {
#pragma GCC unroll 4
    for (std::size_t k = 0; k < kVectors; k++)
        __builtin_memcpy(to + k * kNumbers / kVectors, &lanes.v[k], kVectorBytes);
}
/// Returns true if the highest bit of any word is set.
inline bool AnyHigh(Words words) {
    WordVector vector = words.v[0];
#pragma GCC unroll 4
    for (int k = 1; k < kVectors; k++)
        vector |= words.v[k];
    Word all = 0;
#pragma GCC unroll 8
    for (std::size_t i = 0; i < kVectorBytes / sizeof(Word); i++)
        all |= vector[i];
    return all >> 63 != 0;
}

} // namespace

} // namespace vexa::formula
