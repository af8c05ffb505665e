// SPDX-License-Identifier: GPL-3.0-or-later
// The low-cut filters of many voices side by side.
//
// The formula is
//
//     w0 = hpa hpsum0 + s,  hpsum0 = w0 rounded to float, w1 and hpsum1 likewise from hpb,
//     output = s - hpgain (w0 - w1).
//
// Of w0 - w1 there remains hpa hpsum0 - hpb hpsum1, whose products are exact in double precision.
// Only the sums depend on what came before, each by one operation from sample to sample, and they
// advance for several voices at a time: the voices are the lanes of a vector. (A fused operation
// rounds once where the formula rounds to double and then to float. The two differ about once in
// 2^29 samples, by the last bit of a sum.)
#pragma once

#include "synth/BlockLoops.h"
#include "synth/PlaneFunction.h"

#include <type_traits>

#if defined(__FMA__)
#include <immintrin.h>
#endif

namespace vexa {

namespace {

/// Returns a b + c, rounded once.
inline float Fused(float a, float b, float c) {
#if defined(__FMA__) || defined(__ARM_FEATURE_FMA)
    return __builtin_fmaf(a, b, c);
#else
    // The product is exact in double precision. If the sum is not, its last bit is set, so that it
    // lies on the correct side of every midpoint between two floats.
    using Bits = unsigned long long;
    const double product = double(a) * b;
    const double sum = product + c;
    const double part = sum - product;
    const double error = (product - (sum - part)) + (c - part);
    const Bits bits = __builtin_bit_cast(Bits, sum);
    const bool away = (error > 0) == (sum > 0);
    const Bits odd = (bits & 1) != 0 || !(error < 0 || error > 0) ? bits
                     : away                                       ? bits + 1
                                                                  : bits - 1;
    return static_cast<float>(__builtin_bit_cast(double, odd));
#endif
}

using Four = float __attribute__((vector_size(4 * sizeof(float))));
using Eight = float __attribute__((vector_size(8 * sizeof(float))));

/// Advances filters by one sample: computes their output and the next sums.
template<class Lanes>
inline void Step(const Lanes& hpa, const Lanes& hpb, const Lanes& gain, const Lanes& s,
                 Lanes& hpsum0, Lanes& hpsum1, Lanes& output) {
    constexpr int lanes = sizeof(Lanes) / sizeof(float);
    Lanes next0, next1;
    for (int k = 0; k < lanes; k++) {
        const double w = double(hpa[k]) * hpsum0[k] - double(hpb[k]) * hpsum1[k];
        output[k] = static_cast<float>(s[k] - gain[k] * w);
        next0[k] = Fused(hpa[k], hpsum0[k], s[k]);
        next1[k] = Fused(hpb[k], hpsum1[k], s[k]);
    }
    hpsum0 = next0;
    hpsum1 = next1;
}

#if defined(__FMA__)
// These overloads do the same with whole vectors, because the compiler sometimes treats the lanes
// one by one.

inline void Step(const Four& hpa, const Four& hpb, const Four& gain, const Four& s, Four& hpsum0,
                 Four& hpsum1, Four& output) {
    const auto wide = [](Four values) { return _mm256_cvtps_pd(values); };
    const __m256d w = _mm256_fmsub_pd(wide(hpa), wide(hpsum0), wide(hpb) * wide(hpsum1));
    output = _mm256_cvtpd_ps(wide(s) - wide(gain) * w);
    hpsum0 = _mm_fmadd_ps(hpa, hpsum0, s);
    hpsum1 = _mm_fmadd_ps(hpb, hpsum1, s);
}

inline void Step(const Eight& hpa, const Eight& hpb, const Eight& gain, const Eight& s,
                 Eight& hpsum0, Eight& hpsum1, Eight& output) {
#if defined(__AVX512F__)
    // The forms with a mask of all lanes are used, because the compiler warns of an uninitialized
    // value in the forms without a mask.
    const auto wide = [](Eight values) { return _mm512_maskz_cvtps_pd(0xFF, values); };
    const __m512d w = _mm512_fmsub_pd(wide(hpa), wide(hpsum0), wide(hpb) * wide(hpsum1));
    output = _mm512_maskz_cvtpd_ps(0xFF, wide(s) - wide(gain) * w);
    hpsum0 = _mm256_fmadd_ps(hpa, hpsum0, s);
    hpsum1 = _mm256_fmadd_ps(hpb, hpsum1, s);
#else
    const auto low = [](const Eight& v) { return Four(_mm256_castps256_ps128(v)); };
    const auto high = [](const Eight& v) { return Four(_mm256_extractf128_ps(v, 1)); };
    Four sums0[] = {low(hpsum0), high(hpsum0)}, sums1[] = {low(hpsum1), high(hpsum1)}, outputs[2];
    Step(low(hpa), low(hpb), low(gain), low(s), sums0[0], sums1[0], outputs[0]);
    Step(high(hpa), high(hpb), high(gain), high(s), sums0[1], sums1[1], outputs[1]);
    hpsum0 = _mm256_set_m128(sums0[1], sums0[0]);
    hpsum1 = _mm256_set_m128(sums1[1], sums1[0]);
    output = _mm256_set_m128(outputs[1], outputs[0]);
#endif
}
#endif

/// Writes four columns, from `place` on in each row; a column has one row per lane.
inline void Columns(const float* const* rows, int place, Four* columns) {
    Four four[4];
    for (int row = 0; row < 4; row++)
        __builtin_memcpy(&four[row], rows[row] + place, sizeof(Four));
    const Four low01 = __builtin_shufflevector(four[0], four[1], 0, 4, 1, 5);
    const Four low23 = __builtin_shufflevector(four[2], four[3], 0, 4, 1, 5);
    const Four high01 = __builtin_shufflevector(four[0], four[1], 2, 6, 3, 7);
    const Four high23 = __builtin_shufflevector(four[2], four[3], 2, 6, 3, 7);
    columns[0] = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
    columns[1] = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
    columns[2] = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
    columns[3] = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
}

inline void Columns(const float* const* rows, int place, Eight* columns) {
#if defined(__FMA__)
    // Does the same in both halves of the vectors; the lower half has the first four rows. Without
    // intrinsics the compiler would insert the second half by a shuffle, and shuffles are what
    // limits the speed here.
    Eight four[4];
    for (int row = 0; row < 4; row++)
        four[row] = _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(rows[row] + place)),
                                         _mm_loadu_ps(rows[row + 4] + place), 1);
    const Eight low01 = __builtin_shufflevector(four[0], four[1], 0, 8, 1, 9, 4, 12, 5, 13);
    const Eight low23 = __builtin_shufflevector(four[2], four[3], 0, 8, 1, 9, 4, 12, 5, 13);
    const Eight high01 = __builtin_shufflevector(four[0], four[1], 2, 10, 3, 11, 6, 14, 7, 15);
    const Eight high23 = __builtin_shufflevector(four[2], four[3], 2, 10, 3, 11, 6, 14, 7, 15);
    columns[0] = __builtin_shufflevector(low01, low23, 0, 1, 8, 9, 4, 5, 12, 13);
    columns[1] = __builtin_shufflevector(low01, low23, 2, 3, 10, 11, 6, 7, 14, 15);
    columns[2] = __builtin_shufflevector(high01, high23, 0, 1, 8, 9, 4, 5, 12, 13);
    columns[3] = __builtin_shufflevector(high01, high23, 2, 3, 10, 11, 6, 7, 14, 15);
#else
    Four first[4], second[4];
    Columns(rows, place, first);
    Columns(rows + 4, place, second);
    for (int column = 0; column < 4; column++) {
        __builtin_memcpy(&columns[column], &first[column], sizeof(Four));
        __builtin_memcpy(reinterpret_cast<float*>(&columns[column]) + 4, &second[column],
                         sizeof(Four));
    }
#endif
}

/// Returns true if Heard would change none of the samples.
bool AllHeard(const float* samples, std::size_t count) {
    int beyond = 0;
    for (std::size_t i = 0; i < count; i++)
        beyond |= __builtin_fabsf(samples[i]) <= kMostHeard ? 0 : 1;
    return beyond == 0;
}

/// Applies Heard to the samples. Returns true if one was out of bounds.
bool Bound(float* samples, int count) {
    bool beyond = false;
    for (int i = 0; i < count; i++) {
        float& s = samples[i];
        // The difference of a non-finite number from itself is not 0.
        s = s - s == 0 ? s : 0;
        beyond = beyond || s > kMostHeard || s < -kMostHeard;
        s = s > kMostHeard ? kMostHeard : s < -kMostHeard ? -kMostHeard : s;
    }
    return beyond;
}

/// A group of filters that advance together, at most one per lane.
template<class Lanes>
class SideBySide {
  public:
    SideBySide(LowCutFilter* const* filters, int voices) : filters(filters), voices(voices) {
        Gather(&LowCutFilter::hpa, hpa);
        Gather(&LowCutFilter::hpb, hpb);
        Gather(&LowCutFilter::hpgain, gain);
        Gather(&LowCutFilter::hpsum0, hpsum0);
        Gather(&LowCutFilter::hpsum1, hpsum1);
        const auto sound = (hpsum0 - hpsum0 == Lanes{}) & (hpsum1 - hpsum1 == Lanes{});
        hpsum0 = sound ? hpsum0 : Lanes{};
        hpsum1 = sound ? hpsum1 : Lanes{};
    }

    /// Takes `count` samples of each voice as the input, and moves `samples` past them. The voices'
    /// lines are `count` apart. Returns true if a sample was out of bounds.
    bool Take(const float*& samples, bool allHeard, int count) {
        alignas(64) static const float silence[kRoom]{};
        const float* lines[kWidth];
        for (int k = 0; k < kWidth; k++)
            lines[k] = k < voices ? samples + k * count : silence;
        for (int i = 0; i < count; i += 4)
            Columns(lines, i, moments + i);
        samples += voices * count;
        return !allHeard && Bound(Row(0), count * kWidth);
    }

    /// The state of the filters while they advance through the input.
    class Walk {
      public:
        explicit Walk(SideBySide& of)
            : of(of), a(of.hpa), b(of.hpb), gain(of.gain), sum0(of.hpsum0), sum1(of.hpsum1) {}
        /// Replaces the input of this moment by the output.
        void Advance(int moment) {
            Step(a, b, gain, of.moments[moment], sum0, sum1, output);
            of.moments[moment] = output;
        }
        void End() const {
            of.hpsum0 = sum0;
            of.hpsum1 = sum1;
            of.last = output;
        }

      private:
        SideBySide& of;
        const Lanes a, b, gain;
        Lanes sum0, sum1, output{};
    };

    void AddTo(float* sum, int count) {
        for (int i = 0; i < count; i += kWidth) {
            const float* rows[kWidth];
            for (int moment = 0; moment < kWidth; moment++)
                rows[moment] = Row(i + moment);
            Lanes total;
            __builtin_memcpy(&total, sum + i, sizeof total);
            for (int k = 0; k < kWidth; k += 4) {
                Lanes outputs[4];
                Columns(rows, k, outputs);
                for (const Lanes& output : outputs)
                    total += output;
            }
            __builtin_memcpy(sum + i, &total, sizeof total);
        }
    }

    /// Stores the state in the filters.
    void End() const {
        for (int k = 0; k < voices; k++) {
            filters[k]->hpsum0 = hpsum0[k];
            filters[k]->hpsum1 = hpsum1[k];
            filters[k]->out = last[k];
        }
    }

  private:
    static constexpr int kWidth = sizeof(Lanes) / sizeof(float);

    void Gather(float LowCutFilter::*field, Lanes& to) const {
        float values[kWidth]{};
        for (int k = 0; k < voices; k++)
            values[k] = filters[k]->*field;
        __builtin_memcpy(&to, values, sizeof to);
    }

    float* Row(int moment) { return reinterpret_cast<float*>(moments + moment); }

    LowCutFilter* const* filters;
    int voices;
    Lanes hpa, hpb, gain, hpsum0, hpsum1, last{};
    /// The voices' samples at each moment: first the input, then the output.
    alignas(64) Lanes moments[kRoom];
};

/// Advances groups of filters in one loop, so that one group is computed while another waits for
/// its sums.
template<class... Walks>
void WalkTogether(int count, Walks... walks) {
    for (int i = 0; i < count; i++)
        (walks.Advance(i), ...);
    (walks.End(), ...);
}

/// Filters the cells with groups that follow one another. Returns true if a sample was out of
/// bounds.
template<class... Groups>
bool LowCutOf(const float* samples, bool allHeard, int count, float* sum, std::size_t cells,
              std::size_t stride, Groups&&... groups) {
    bool beyond = false;
    for (std::size_t i = 0; i < cells; i++) {
        const float* lines = samples + i * stride;
        ((beyond |= groups.Take(lines, allHeard, count)), ...);
        WalkTogether(count, typename std::remove_reference_t<Groups>::Walk(groups)...);
        (groups.AddTo(sum + i * std::size_t(count), count), ...);
    }
    (groups.End(), ...);
    return beyond;
}

bool LowCut(LowCutFilter* const* filters, const float* samples, std::size_t voices,
            std::size_t count, float* sum, std::size_t cells, std::size_t stride) {
    const int n = static_cast<int>(count);
    bool allHeard = true, beyond = false;
    for (std::size_t i = 0; i < cells; i++)
        allHeard &= AllHeard(samples + i * stride, voices * count);
    for (int left = static_cast<int>(voices); left > 0;) {
        const auto run = [&](auto&&... groups) {
            beyond |= LowCutOf(samples, allHeard, n, sum, cells, stride, groups...);
        };
        const int side = left < 8 ? left : left <= 12 ? left : 8;
        if (side > 8)
            run(SideBySide<Eight>(filters, 8), SideBySide<Four>(filters + 8, side - 8));
        else if (side > 4)
            run(SideBySide<Eight>(filters, side));
        else
            run(SideBySide<Four>(filters, side));
        filters += side;
        samples += side * n;
        left -= side;
    }
    return beyond;
}

} // namespace

} // namespace vexa
