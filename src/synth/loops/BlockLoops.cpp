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
    // The Taylor series to r^17, whose remainder is below 1e-13 up to pi / 2 ... 1.58.
    const double q = r * r;
    double sum = 1.0 / 355687428096000;
    sum = sum * q - 1.0 / 1307674368000;
    sum = sum * q + 1.0 / 6227020800;
    sum = sum * q - 1.0 / 39916800;
    sum = sum * q + 1.0 / 362880;
    sum = sum * q - 1.0 / 5040;
    sum = sum * q + 1.0 / 120;
    sum = sum * q - 1.0 / 6;
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

template<std::size_t lanes>
void LowCutOf(LowCutLanes& filters, float* __restrict samples, std::size_t count) {
    float hpsum0[lanes];
    float hpsum1[lanes];
    double hpa[lanes];
    double hpb[lanes];
    double hpgain[lanes];
    for (std::size_t k = 0; k < lanes; k++) {
        hpsum0[k] = filters.hpsum0[k];
        hpsum1[k] = filters.hpsum1[k];
        hpa[k] = filters.hpa[k];
        hpb[k] = filters.hpb[k];
        hpgain[k] = filters.hpgain[k];
    }
    for (std::size_t i = 0; i < count; i++) {
        float* __restrict now = samples + i * lanes;
        for (std::size_t k = 0; k < lanes; k++) {
            const float s = __builtin_fabsf(now[k]) <= 0x1.fffffep127F ? now[k] : 0.0F;
            const double w0 = hpa[k] * hpsum0[k] + s;
            const double w1 = hpb[k] * hpsum1[k] + s;
            hpsum0[k] = static_cast<float>(w0);
            hpsum1[k] = static_cast<float>(w1);
            now[k] = static_cast<float>(s - hpgain[k] * (w0 - w1));
        }
    }
    for (std::size_t k = 0; k < lanes; k++) {
        filters.hpsum0[k] = hpsum0[k];
        filters.hpsum1[k] = hpsum1[k];
    }
}

void LowCut(LowCutLanes& filters, float* samples, std::size_t lanes, std::size_t count) {
    if (lanes == 8)
        LowCutOf<8>(filters, samples, count);
    else if (lanes == 16)
        LowCutOf<16>(filters, samples, count);
    else
        LowCutOf<24>(filters, samples, count);
}

} // namespace

const BlockLoops VEXA_LOOPS_TABLE = {Accumulate, Places<true>, Places<false>,  Line,
                                     LowCut,     Narrow,       VEXA_LOOPS_NAME};

} // namespace vexa
