// SPDX-License-Identifier: GPL-3.0-or-later
// The low-cut filters of many voices side by side.
//
// The formula is
//
//     w0 = hpa hpsum0 + s,  hpsum0 = w0 rounded to float, the same for 1 and b,
//     output = s - hpgain (w0 - w1).
//
// Only the sums depend on what came before, each by one operation from sample to sample, and they
// advance for several voices at a time: the voices are the lanes of a vector. (A fused operation
// rounds once where the formula rounds to double and then to float. The two differ about once in
// 2^29 samples, by the last bit of a sum.)
#pragma once

#include "synth/BlockLoops.h"
#include "synth/PlaneFunction.h"

namespace vexa {

namespace {

/// a b + c, rounded once.
inline float Fused(float a, float b, float c) {
#if defined(__FMA__) || defined(__ARM_FEATURE_FMA)
    return __builtin_fmaf(a, b, c);
#else
    // The product is exact in double precision. If the sum is not, its last bit is set so that it
    // lies on the right side of every middle between two floats.
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

inline Four Load(const float* from) {
    Four four;
    __builtin_memcpy(&four, from, sizeof four);
    return four;
}

inline void Store(const Four& four, float* to) {
    __builtin_memcpy(to, &four, sizeof four);
}

/// Makes columns of four rows.
inline void Transpose(Four (&rows)[4]) {
    const Four low01 = __builtin_shufflevector(rows[0], rows[1], 0, 4, 1, 5);
    const Four low23 = __builtin_shufflevector(rows[2], rows[3], 0, 4, 1, 5);
    const Four high01 = __builtin_shufflevector(rows[0], rows[1], 2, 6, 3, 7);
    const Four high23 = __builtin_shufflevector(rows[2], rows[3], 2, 6, 3, 7);
    rows[0] = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
    rows[1] = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
    rows[2] = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
    rows[3] = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
}

/// Whether all samples count as they are.
bool AllHeard(const float* samples, std::size_t count) {
    int beyond = 0;
    for (std::size_t i = 0; i < count; i++)
        beyond |= __builtin_fabsf(samples[i]) <= kMostHeard ? 0 : 1;
    return beyond == 0;
}

/// Bounds the samples as Heard says; true where one was beyond.
template<int lanes>
bool Bound(float (*moments)[lanes], int count) {
    bool beyond = false;
    for (int i = 0; i < count; i++) {
        for (int k = 0; k < lanes; k++) {
            float& s = moments[i][k];
            // What is not finite has no difference from itself.
            s = s - s == 0 ? s : 0;
            beyond = beyond || s > kMostHeard || s < -kMostHeard;
            s = s > kMostHeard ? kMostHeard : s < -kMostHeard ? -kMostHeard : s;
        }
    }
    return beyond;
}

/// Up to as many filters as Lanes is wide; their input's lines stand `count` apart.
template<class Lanes>
bool LowCutOf(LowCutFilter* const* filters, const float* samples, bool allHeard, int voices,
              int count, float* sum) {
    constexpr int lanes = sizeof(Lanes) / sizeof(float);
    // For each moment the voices' samples: first the input, then the output.
    alignas(64) float moments[kRoom][lanes];
    for (int k = 0; k < lanes; k += 4) {
        for (int i = 0; i < count; i += 4) {
            Four rows[4];
            for (int row = 0; row < 4; row++)
                rows[row] = k + row < voices ? Load(samples + (k + row) * count + i) : Four{};
            Transpose(rows);
            for (int moment = 0; moment < 4; moment++)
                Store(rows[moment], &moments[i + moment][k]);
        }
    }
    const bool beyond = !allHeard && Bound<lanes>(moments, count);
    Lanes hpa, hpb, gain, hpsum0, hpsum1;
    const auto gather = [&](float LowCutFilter::*field, Lanes& to) {
        float values[lanes]{};
        for (int k = 0; k < voices; k++)
            values[k] = filters[k]->*field;
        __builtin_memcpy(&to, values, sizeof to);
    };
    gather(&LowCutFilter::hpa, hpa);
    gather(&LowCutFilter::hpb, hpb);
    gather(&LowCutFilter::hpgain, gain);
    gather(&LowCutFilter::hpsum0, hpsum0);
    gather(&LowCutFilter::hpsum1, hpsum1);
    const auto sound = (hpsum0 - hpsum0 == Lanes{}) & (hpsum1 - hpsum1 == Lanes{});
    hpsum0 = sound ? hpsum0 : Lanes{};
    hpsum1 = sound ? hpsum1 : Lanes{};
    for (int i = 0; i < count; i++) {
        Lanes s, next0, next1, output;
        __builtin_memcpy(&s, moments[i], sizeof s);
        for (int k = 0; k < lanes; k++) {
            const double w0 = double(hpa[k]) * hpsum0[k] + s[k];
            const double w1 = double(hpb[k]) * hpsum1[k] + s[k];
            output[k] = static_cast<float>(s[k] - gain[k] * (w0 - w1));
            next0[k] = Fused(hpa[k], hpsum0[k], s[k]);
            next1[k] = Fused(hpb[k], hpsum1[k], s[k]);
        }
        hpsum0 = next0;
        hpsum1 = next1;
        __builtin_memcpy(moments[i], &output, sizeof output);
    }
    for (int k = 0; k < voices; k++) {
        filters[k]->hpsum0 = hpsum0[k];
        filters[k]->hpsum1 = hpsum1[k];
        filters[k]->out = moments[count - 1][k];
    }
    for (int i = 0; i < count; i += 4) {
        Four total = Load(sum + i);
        for (int k = 0; k < lanes; k += 4) {
            Four rows[4];
            for (int moment = 0; moment < 4; moment++)
                rows[moment] = Load(&moments[i + moment][k]);
            Transpose(rows);
            for (int row = 0; row < 4; row++)
                total += rows[row];
        }
        Store(total, sum + i);
    }
    return beyond;
}

bool LowCut(LowCutFilter* const* filters, const float* samples, std::size_t voices,
            std::size_t count, float* sum) {
    const int n = static_cast<int>(count);
    const bool allHeard = AllHeard(samples, voices * count);
    bool beyond = false;
    for (int left = static_cast<int>(voices); left > 0;) {
        const bool wide = left > 4;
        const int side = left < 4 ? left : !wide ? 4 : left < 8 ? left : 8;
        beyond |=
            (wide ? LowCutOf<Eight> : LowCutOf<Four>)(filters, samples, allHeard, side, n, sum);
        filters += side;
        samples += side * n;
        left -= side;
    }
    return beyond;
}

} // namespace

} // namespace vexa
