// BlockLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "synth/BlockLoops.h"

#include <math.h>

namespace vexa {

extern const BlockLoops VEXA_LOOPS_TABLE;

namespace {

using Bits = unsigned long long;

Bits BitsOf(double value) {
    return __builtin_bit_cast(Bits, value);
}

constexpr Bits kMantissa = (Bits{1} << 52) - 1;

/// As long as a sum stays in one binade, the doubles there are a grid, and adding `step` always
/// adds the same multiple `rounded` of the grid's width: then start + i rounded, which is exact, is
/// what i rounded additions give. Not so if step lies in the middle of two multiples, where the
/// rounding depends on the sum, nor at a binade's edge.
bool AddsTheSame(double start, double step, double rounded, double last) {
    const Bits bits = BitsOf(start);
    if ((bits & ~kMantissa) != (BitsOf(last) & ~kMantissa) || (bits & kMantissa) == 0 ||
        (BitsOf(last) & kMantissa) == 0)
        return false;
    const double below = __builtin_bit_cast(double, bits - 1);
    return 2 * fabs(step - rounded) < fabs(start - below);
}

double Accumulate(double start, double step, double* __restrict sums, std::size_t count) {
    const double rounded = start + step - start;
    const double last = start + static_cast<double>(count) * rounded;
    if (step == 0 || AddsTheSame(start, step, rounded, last)) {
        for (std::size_t i = 0; i < count; i++)
            sums[i] = start + static_cast<double>(static_cast<int>(i)) * rounded;
        return last;
    }
    for (std::size_t i = 0; i < count; i++) {
        sums[i] = start;
        start += step;
    }
    return start;
}

// Pi in three parts. The first two have 20 bits, so that their products with whole numbers below
// 2^33 are exact.
constexpr double kPi1 = 0x1.921fcp+1;
constexpr double kPi2 = -0x1.5777ap-20;
constexpr double kPi3 = -0x1.73dcb3b399d74p-42;
/// Adding it rounds to a whole number, which stands in the last bits of the sum.
constexpr double kRounder = 0x1.8p52;

/// sin(phase), or cos(phase) as the sine of what lies a quarter turn on, for |phase| <= 1e10.
template<bool cosine>
inline double Wave(double phase) {
    // phase = turns pi + r with |r| <= pi / 2, where turns is whole for the sine and a half more
    // for the cosine; every half turn changes the sign.
    const double shifted = (phase * 0x1.45f306dc9c883p-2 - (cosine ? 0.5 : 0.0)) + kRounder;
    const double whole = shifted - kRounder;
    const double turns = cosine ? whole + 0.5 : whole;
    const double r = ((phase - turns * kPi1) - turns * kPi2) - turns * kPi3;
    // An odd polynomial that interpolates the sine at Chebyshev's points up to pi / 2; its error is
    // 3.2e-13.
    const double q = r * r;
    double sum = 1.5502436806172772e-10;
    sum = sum * q - 2.5036740997648383e-08;
    sum = sum * q + 2.7557123097373394e-06;
    sum = sum * q - 0.00019841268708462154;
    sum = sum * q + 0.008333333330938794;
    sum = sum * q - 0.1666666666665846;
    const double sine = r + r * q * sum;
    const Bits sign = (BitsOf(shifted) + (cosine ? 1 : 0)) << 63;
    return __builtin_bit_cast(double, BitsOf(sine) ^ sign);
}

template<bool cosine>
void Places(const double* __restrict phase, const float* __restrict envelope, double radius,
            const double* __restrict centre, float* __restrict place, std::size_t count) {
    if (count == 0)
        return;
    // The phases of a block run in one direction.
    if (!(fabs(phase[0]) <= 1e10 && fabs(phase[count - 1]) <= 1e10)) {
        for (std::size_t i = 0; i < count; i++) {
            const double wave = cosine ? cos(phase[i]) : sin(phase[i]);
            place[i] = static_cast<float>(envelope[i] * radius * wave + centre[i]);
        }
        return;
    }
    for (std::size_t i = 0; i < count; i++)
        place[i] = static_cast<float>(envelope[i] * radius * Wave<cosine>(phase[i]) + centre[i]);
}

void Line(const EnvelopeLine& line, const float* __restrict t, float* __restrict values,
          std::size_t count) {
    const EnvelopeLine l = line;
    for (std::size_t i = 0; i < count; i++)
        values[i] = static_cast<float>(l.base + (double(t[i]) - l.origin) * l.rise / l.run);
}

void Narrow(const double* __restrict from, float* __restrict to, std::size_t count) {
    for (std::size_t i = 0; i < count; i++)
        to[i] = static_cast<float>(from[i]);
}

void Words(const float* __restrict values, unsigned* __restrict words, std::size_t count) {
    constexpr float kMost = 2147483520.0F; // the largest float below 2^31
    for (std::size_t i = 0; i < count; i++) {
        const float value = __builtin_fabsf(values[i]) <= 0x1.fffffep127F ? values[i] : 0.0F;
        const float scaled = value * 255.0F;
        const float low = scaled < kMost ? scaled : kMost;
        const int v = static_cast<int>(low > -kMost ? low : -kMost);
        words[i] = v > 0 ? unsigned(v) : unsigned(-v) << 16;
    }
}

/// a b + c, rounded once.
inline float Fused(float a, float b, float c) {
#if defined(__FMA__)
    return __builtin_fmaf(a, b, c);
#else
    // The product is exact in double precision. If the sum is not, its last bit is set so that it
    // lies on the right side of every middle between two floats.
    const double product = double(a) * b;
    const double sum = product + c;
    const double part = sum - product;
    const double error = (product - (sum - part)) + (c - part);
    const Bits bits = BitsOf(sum);
    const bool away = (error > 0) == (sum > 0);
    const Bits odd = (bits & 1) != 0 || !(error < 0 || error > 0) ? bits
                     : away                                       ? bits + 1
                                                                  : bits - 1;
    return static_cast<float>(__builtin_bit_cast(double, odd));
#endif
}

/// The formula is
///
///     w0 = hpa hpsum0 + s,  hpsum0 = w0 rounded to float, the same for 1 and b,
///     output = s - hpgain (w0 - w1).
///
/// Only the sums depend on what came before, so only they are computed in the order of time, with
/// one operation from sample to sample, and for several voices at a time: while one waits for its
/// sum, the others go on. (A fused operation rounds once where the formula rounds to double and
/// then to float. The two differ about once in 2^29 samples, by the last bit of a sum.)
template<std::size_t side>
void LowCutOf(LowCutFilter* const* filters, float* __restrict samples, std::size_t count) {
    float sums0[side][kMostSamples];
    float sums1[side][kMostSamples];
    float hpa[side], hpb[side], hpsum0[side], hpsum1[side];
    for (std::size_t k = 0; k < side; k++) {
        hpa[k] = filters[k]->hpa;
        hpb[k] = filters[k]->hpb;
        hpsum0[k] = filters[k]->hpsum0;
        hpsum1[k] = filters[k]->hpsum1;
    }
    for (std::size_t i = 0; i < count; i++) {
        for (std::size_t k = 0; k < side; k++) {
            const float s = samples[k * count + i];
            sums0[k][i] = hpsum0[k];
            sums1[k][i] = hpsum1[k];
            hpsum0[k] = Fused(hpa[k], hpsum0[k], s);
            hpsum1[k] = Fused(hpb[k], hpsum1[k], s);
        }
    }
    for (std::size_t k = 0; k < side; k++) {
        filters[k]->hpsum0 = hpsum0[k];
        filters[k]->hpsum1 = hpsum1[k];
        float* __restrict line = samples + k * count;
        const double a = hpa[k];
        const double b = hpb[k];
        const double gain = filters[k]->hpgain;
        for (std::size_t i = 0; i < count; i++) {
            const float s = line[i];
            const double w0 = a * sums0[k][i] + s;
            const double w1 = b * sums1[k][i] + s;
            line[i] = static_cast<float>(s - gain * (w0 - w1));
        }
    }
}

void LowCut(LowCutFilter* const* filters, float* __restrict samples, std::size_t voices,
            std::size_t count) {
    for (std::size_t i = 0; i < voices * count; i++)
        samples[i] = __builtin_fabsf(samples[i]) <= 0x1.fffffep127F ? samples[i] : 0.0F;
    std::size_t k = 0;
    for (; k + 4 <= voices; k += 4)
        LowCutOf<4>(filters + k, samples + k * count, count);
    for (; k < voices; k++)
        LowCutOf<1>(filters + k, samples + k * count, count);
}

} // namespace

const BlockLoops VEXA_LOOPS_TABLE = {Accumulate, Places<true>, Places<false>, Line,
                                     LowCut,     Narrow,       Words,         VEXA_LOOPS_NAME};

} // namespace vexa
