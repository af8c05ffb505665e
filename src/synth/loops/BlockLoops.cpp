// BlockLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "synth/BlockLoops.h"

#include "synth/EqualSteps.h"
#include "synth/loops/LowCut.h"

#include <math.h>

namespace vexa {

extern const BlockLoops VEXA_LOOPS_TABLE;

namespace {

using Bits = unsigned long long;

Bits BitsOf(double value) {
    return __builtin_bit_cast(Bits, value);
}

/// What the loops go on to: a multiple of kSlack, so that no part of a vector is left over.
std::size_t Whole(std::size_t count) {
    return (count + kSlack - 1) & ~(kSlack - 1);
}

/// A loop's counter as a double; from a narrow integer, which every instruction set converts.
double Count(std::size_t i) {
    return static_cast<double>(static_cast<int>(i));
}

double Accumulate(double start, double step, double* __restrict sums, std::size_t count) {
    const double rounded = RoundedStep(start, step);
    const double last = start + Count(count) * rounded;
    if (AddsTheSame(start, step, rounded, last)) {
        for (std::size_t i = 0; i < Whole(count); i++)
            sums[i] = start + Count(i) * rounded;
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
    // 7.5e-16.
    const double q = r * r;
    double sum = -7.408054589746705e-13;
    sum = sum * q + 1.6050972223790066e-10;
    sum = sum * q - 2.5051972921032034e-08;
    sum = sum * q + 2.755731805567987e-06;
    sum = sum * q - 0.00019841269836468994;
    sum = sum * q + 0.008333333333325933;
    sum = sum * q - 0.1666666666666665;
    const double sine = r + r * q * sum;
    const Bits sign = (BitsOf(shifted) + (cosine ? 1 : 0)) << 63;
    return __builtin_bit_cast(double, BitsOf(sine) ^ sign);
}

void Waves(const double* __restrict phase, double* __restrict sines, double* __restrict cosines,
           std::size_t count) {
    bool small = true;
    for (std::size_t i = 0; i < count; i++)
        small = small && fabs(phase[i]) <= 1e10;
    if (!small) {
        for (std::size_t i = 0; i < count; i++) {
            sines[i] = sin(phase[i]);
            cosines[i] = cos(phase[i]);
        }
        return;
    }
    for (std::size_t i = 0; i < count; i++) {
        sines[i] = Wave<false>(phase[i]);
        cosines[i] = Wave<true>(phase[i]);
    }
}

/// The waves of a cell as far as the block needs them, by the angle addition theorem: value and
/// slope after each eight steps, and from there on after 0 to 7 more.
void SteppedWaves(const Coordinate& c, double* waves, std::size_t count) {
    using Eight = double __attribute__((vector_size(8 * sizeof(double))));
    const auto load = [](const double* from, Eight& to) { __builtin_memcpy(&to, from, sizeof to); };
    Eight sines, cosines, eightSines, eightCosines;
    load(c.steps->sines, sines);
    load(c.steps->cosines, cosines);
    load(c.steps->eightSines, eightSines);
    load(c.steps->eightCosines, eightCosines);
    alignas(64) double values[8], slopes[8];
    const Eight eightValues = c.value * eightCosines + c.slope * eightSines;
    const Eight eightSlopes = c.slope * eightCosines - c.value * eightSines;
    __builtin_memcpy(values, &eightValues, sizeof values);
    __builtin_memcpy(slopes, &eightSlopes, sizeof slopes);
    for (std::size_t g = c.offset / 8; 8 * g < c.offset + count; g++) {
        const Eight wave = values[g] * cosines + slopes[g] * sines;
        __builtin_memcpy(waves + 8 * g, &wave, sizeof wave);
    }
}

template<bool enveloped, bool drifting>
void PlacesOf(const Coordinate& coordinate, const double* __restrict waves, std::size_t count) {
    const Coordinate c = coordinate;
    float* __restrict const place = c.place;
    for (std::size_t i = 0; i < Whole(count); i++) {
        const double radius = enveloped ? c.envelope[i] * c.radius : c.radius;
        const double centre = drifting ? c.centres[i] : c.centre + Count(i) * c.drift;
        place[i] = static_cast<float>(radius * waves[i] + centre);
    }
}

void Places(const Coordinate* coordinates, std::size_t number, std::size_t count) {
    for (std::size_t k = 0; k < number; k++) {
        const Coordinate& c = coordinates[k];
        alignas(64) double cell[kRoom];
        const double* waves = c.waves;
        if (c.steps) {
            SteppedWaves(c, cell, count);
            waves = cell + c.offset;
        }
        if (c.envelope)
            (c.centres ? PlacesOf<true, true> : PlacesOf<true, false>)(c, waves, count);
        else
            (c.centres ? PlacesOf<false, true> : PlacesOf<false, false>)(c, waves, count);
    }
}

template<std::size_t side>
void DriftsOf(const Drift* drifts, std::size_t count) {
    double steps[side][kRoom];
    double centre[side];
    for (std::size_t k = 0; k < side; k++) {
        const Drift d = drifts[k];
        for (std::size_t i = 0; i < Whole(count); i++)
            steps[k][i] = d.dt * (d.envelope[i] * d.weight + d.rest);
        centre[k] = *d.centre;
    }
    for (std::size_t i = 0; i < count; i++) {
        for (std::size_t k = 0; k < side; k++) {
            drifts[k].centres[i] = centre[k];
            centre[k] += steps[k][i];
        }
    }
    for (std::size_t k = 0; k < side; k++)
        *drifts[k].centre = centre[k];
}

void Drifts(const Drift* drifts, std::size_t number, std::size_t count) {
    for (; number >= 4; drifts += 4, number -= 4)
        DriftsOf<4>(drifts, count);
    for (; number >= 2; drifts += 2, number -= 2)
        DriftsOf<2>(drifts, count);
    if (number > 0)
        DriftsOf<1>(drifts, count);
}

void Line(const EnvelopeLine& line, const float* __restrict t, float* __restrict values,
          std::size_t count) {
    const EnvelopeLine l = line;
    for (std::size_t i = 0; i < count; i++)
        values[i] = static_cast<float>(l.base + (double(t[i]) - l.origin) * l.rise / l.run);
}

void Narrow(const double* __restrict from, float* __restrict to, std::size_t count) {
    for (std::size_t i = 0; i < Whole(count); i++)
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

} // namespace

const BlockLoops VEXA_LOOPS_TABLE = {Accumulate, Waves,  Places, Drifts,         Line,
                                     LowCut,     Narrow, Words,  VEXA_LOOPS_NAME};

} // namespace vexa
