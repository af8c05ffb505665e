// SPDX-License-Identifier: GPL-3.0-or-later
// BlockLoops for the instruction set that this file is compiled for.
//
// No function of the standard library's templates is used here: an instance that uses wide vectors
// could be linked into code that runs on any machine.
#include "synth/BlockLoops.h"

#include "kits/maths/FarWaves.h"
#include "kits/maths/Functions.h"
#include "synth/EqualSteps.h"
#include "synth/loops/LowCut.h"

#include <math.h>

namespace vexa {

extern const BlockLoops VEXA_LOOPS_TABLE;

namespace {

/// Returns the length to which the loops continue, a multiple of kSlack, so that every vector is
/// whole.
std::size_t Whole(std::size_t count) {
    return (count + kSlack - 1) & ~(kSlack - 1);
}

/// Returns a loop's counter as a double. It is converted from a narrow integer, because every
/// instruction set has that conversion.
double Count(std::size_t i) {
    return static_cast<double>(static_cast<int>(i));
}

/// Writes the sums as values of the type `Number`.
template<class Number>
double AccumulateAs(double start, double step, double* __restrict sums, std::size_t count) {
    const double rounded = RoundedStep(start, step);
    const double last = start + Count(count) * rounded;
    if (AddsTheSame(start, step, rounded, last)) {
        for (std::size_t i = 0; i < Whole(count); i++)
            sums[i] = static_cast<Number>(start + Count(i) * rounded);
        return last;
    }
    for (std::size_t i = 0; i < count; i++) {
        sums[i] = static_cast<Number>(start);
        start += step;
    }
    return start;
}

double Accumulate(double start, double step, double* sums, std::size_t count) {
    return AccumulateAs<double>(start, step, sums, count);
}

double Moments(double start, double step, double* sums, std::size_t count) {
    return AccumulateAs<float>(start, step, sums, count);
}

void Waves(const double* __restrict phase, double* __restrict sines, double* __restrict cosines,
           std::size_t count) {
    long long beyond = 0;
    for (std::size_t i = 0; i < count; i++) {
        beyond |= fabs(phase[i]) <= kits::maths::kLongestPhase ? 0 : 1;
        sines[i] = kits::maths::Wave<false>(phase[i]);
        cosines[i] = kits::maths::Wave<true>(phase[i]);
    }
    if (beyond == 0)
        return;
    for (std::size_t i = 0; i < count; i++) {
        if (!(fabs(phase[i]) <= kits::maths::kLongestPhase)) {
            sines[i] = kits::FarSine(phase[i]);
            cosines[i] = kits::FarCosine(phase[i]);
        }
    }
}

using EightDoubles = double __attribute__((vector_size(8 * sizeof(double))));
using EightFloats = float __attribute__((vector_size(8 * sizeof(float))));

/// Computes the waves of a cell with the angle addition theorem: value and slope after each eight
/// steps, and from there the waves after 0 to 7 more.
class SteppedWaves {
  public:
    explicit SteppedWaves(const StepWaves& steps) {
        Load(steps.sines, sines);
        Load(steps.cosines, cosines);
        Load(steps.eightSines, eightSines);
        Load(steps.eightCosines, eightCosines);
    }
    /// Writes value and slope after each eight steps of a cell that begins with `value` and
    /// `slope`.
    void Begin(double value, double slope, double* values, double* slopes) const {
        const EightDoubles eightValues = value * eightCosines + slope * eightSines;
        const EightDoubles eightSlopes = slope * eightCosines - value * eightSines;
        __builtin_memcpy(values, &eightValues, sizeof eightValues);
        __builtin_memcpy(slopes, &eightSlopes, sizeof eightSlopes);
    }
    /// Writes the waves after 0 to 7 steps from there. They are not returned, because the way in
    /// which vectors are returned depends on the instruction set.
    void Take(double value, double slope, EightDoubles& waves) const {
        waves = value * cosines + slope * sines;
    }

  private:
    static void Load(const double* from, EightDoubles& to) {
        __builtin_memcpy(&to, from, sizeof to);
    }

    EightDoubles sines, cosines, eightSines, eightCosines;
};

/// The most frequent case: stepped waves from a multiple of eight on, with a constant radius round
/// a fixed centre.
void StillPlaces(const Coordinate& c, std::size_t count) {
    const SteppedWaves waves(*c.steps);
    alignas(64) double values[8], slopes[8];
    waves.Begin(c.value, c.slope, values, slopes);
    const double radius = c.radius;
    // Adding a drift of 0 keeps the bits of the general loop: -0 + 0 is +0.
    const double centre = c.centre + c.drift;
    float* const place = c.place;
    const std::size_t first = c.offset / 8;
    for (std::size_t g = 0; 8 * g < count; g++) {
        EightDoubles wave;
        waves.Take(values[first + g], slopes[first + g], wave);
        const auto rounded = __builtin_convertvector(radius * wave + centre, EightFloats);
        __builtin_memcpy(place + 8 * g, &rounded, sizeof rounded);
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
            if (!c.envelope && !c.centres && c.drift == 0 && c.offset % 8 == 0) {
                StillPlaces(c, count);
                continue;
            }
            const SteppedWaves stepped(*c.steps);
            alignas(64) double values[8], slopes[8];
            stepped.Begin(c.value, c.slope, values, slopes);
            for (std::size_t g = c.offset / 8; 8 * g < c.offset + count; g++) {
                EightDoubles wave;
                stepped.Take(values[g], slopes[g], wave);
                __builtin_memcpy(cell + 8 * g, &wave, sizeof wave);
            }
            waves = cell + c.offset;
        }
        if (c.envelope)
            (c.centres ? PlacesOf<true, true> : PlacesOf<true, false>)(c, waves, count);
        else
            (c.centres ? PlacesOf<false, true> : PlacesOf<false, false>)(c, waves, count);
    }
}

/// How the centre moves: not at all, by equal steps, or along given places.
enum class Centre { stays, drifts, wanders };

template<bool enveloped, Centre centre>
void CellsOf(const Coordinate& coordinate, const CellWaves& begin, std::size_t cells,
             std::size_t stride) {
    const Coordinate c = coordinate;
    const SteppedWaves waves(*c.steps);
    const EightDoubles moments = {0, 1, 2, 3, 4, 5, 6, 7};
    // The waves of all cells are computed first. A value read from memory is then broadcast to all
    // lanes, while the compiler would copy values still in registers from lane to lane, which takes
    // as long as a multiplication.
    alignas(64) double values[kMostCells][8], slopes[kMostCells][8];
    for (std::size_t n = 0; n < cells; n++)
        waves.Begin(begin.values[n], begin.slopeSign * begin.slopes[n], values[n], slopes[n]);
    for (std::size_t n = 0; n < cells; n++) {
        const std::size_t first = n * kMostSamples;
        const double start = c.centre + Count(first) * c.drift;
        float* const place = c.place + n * stride;
        alignas(64) double radii[kMostSamples];
        for (std::size_t i = 0; enveloped && i < kMostSamples; i++)
            radii[i] = c.envelope[first + i] * c.radius;
        for (std::size_t g = 0; g < kMostSamples / 8; g++) {
            EightDoubles wave, centres, radius = EightDoubles{} + c.radius;
            waves.Take(values[n][g], slopes[n][g], wave);
            if constexpr (enveloped)
                __builtin_memcpy(&radius, radii + 8 * g, sizeof radius);
            if constexpr (centre == Centre::wanders)
                __builtin_memcpy(&centres, c.centres + first + 8 * g, sizeof centres);
            else if constexpr (centre == Centre::drifts)
                centres = start + (moments + Count(8 * g)) * c.drift;
            else // which may have another sign than the centre
                centres = start + EightDoubles{};
            const auto rounded = __builtin_convertvector(radius * wave + centres, EightFloats);
            __builtin_memcpy(place + 8 * g, &rounded, sizeof rounded);
        }
    }
}

template<Centre centre>
void CellsRound(const Coordinate& c, const CellWaves& waves, std::size_t cells,
                std::size_t stride) {
    (c.envelope ? CellsOf<true, centre> : CellsOf<false, centre>)(c, waves, cells, stride);
}

void Cells(const Coordinate& c, const CellWaves& waves, std::size_t cells, std::size_t stride) {
    (c.centres        ? CellsRound<Centre::wanders>
     : c.drift != 0.0 ? CellsRound<Centre::drifts>
                      : CellsRound<Centre::stays>)(c, waves, cells, stride);
}

void Steps(const Speed& speed, double* __restrict steps, std::size_t count) {
    const Speed s = speed;
    for (std::size_t i = 0; i < Whole(count) && !s.weights; i++)
        steps[i] = s.dt * (s.envelope[i] * s.weight + s.rest);
    for (std::size_t i = 0; i < Whole(count) && s.weights; i++)
        steps[i] = s.dt * (s.envelope[i] * s.weights[i] + s.rests[i]);
}

template<std::size_t side>
void DriftsOf(const Drift* drifts, std::size_t count) {
    double* steps[side];
    double centre[side];
    for (std::size_t k = 0; k < side; k++) {
        steps[k] = drifts[k].steps;
        centre[k] = *drifts[k].centre;
    }
    for (std::size_t i = 0; i < count; i++) {
        for (std::size_t k = 0; k < side; k++) {
            const double next = centre[k] + steps[k][i];
            steps[k][i] = centre[k];
            centre[k] = next;
        }
    }
    for (std::size_t k = 0; k < side; k++)
        *drifts[k].centre = centre[k];
}

void Drifts(const Drift* drifts, std::size_t number, std::size_t count) {
    for (; number >= 8; drifts += 8, number -= 8)
        DriftsOf<8>(drifts, count);
    for (; number >= 4; drifts += 4, number -= 4)
        DriftsOf<4>(drifts, count);
    for (; number >= 2; drifts += 2, number -= 2)
        DriftsOf<2>(drifts, count);
    if (number > 0)
        DriftsOf<1>(drifts, count);
}

#if defined(__FMA__)
/// Divides by b with one of Markstein's steps, with the same bits as a / b and in a third of the
/// time of a division. P. Markstein, "Computation of elementary functions on the IBM RISC
/// System/6000 processor", 1990: the step rounds like a division if `reciprocal` is correctly
/// rounded, and if the first approximation is one of the two numbers next to the quotient. It is,
/// because the reciprocal has twice as many digits here. Valid unless something overflows or the
/// remainder underflows; a 0 may have the other sign.
struct Divisor {
    double b, reciprocal, rest;

    explicit Divisor(double b)
        : b(b), reciprocal(1 / b), rest(__builtin_fma(-b, reciprocal, 1.0) * reciprocal) {}

    double Of(double a) const {
        const double close = __builtin_fma(a, reciprocal, a * rest);
        return __builtin_fma(__builtin_fma(-b, close, a), reciprocal, close);
    }
};

/// Returns true if the magnitude is so far from both ends of the range that nothing can overflow or
/// underflow.
bool Moderate(double value) {
    return fabs(value) >= 0x1p-200 && fabs(value) <= 0x1p200;
}
#endif

void Line(const EnvelopeLine& line, const double* __restrict t, float* __restrict values,
          std::size_t count) {
    const EnvelopeLine l = line;
#if defined(__FMA__)
    // The sign of a 0 matters only if the base is -0.
    if (Moderate(l.rise) && Moderate(l.run) && (l.base != 0 || !__builtin_signbit(l.base))) {
        const Divisor run(l.run);
        for (std::size_t i = 0; i < count; i++)
            values[i] = static_cast<float>(l.base + run.Of((t[i] - l.origin) * l.rise));
        return;
    }
#endif
    for (std::size_t i = 0; i < count; i++)
        values[i] = static_cast<float>(l.base + (t[i] - l.origin) * l.rise / l.run);
}

void Parts(std::size_t done, std::size_t length, double* __restrict parts, std::size_t count) {
    const double begin = Count(done), end = Count(length);
#if defined(__FMA__)
    const Divisor whole(end);
    for (std::size_t i = 0; i < Whole(count); i++)
        parts[i] = whole.Of(begin + Count(i));
#else
    for (std::size_t i = 0; i < Whole(count); i++)
        parts[i] = (begin + Count(i)) / end;
#endif
}

void Ramp(const RampLine& line, const double* __restrict parts, double* __restrict values,
          std::size_t count) {
    const RampLine l = line;
    const double way = l.to - l.from;
    for (std::size_t i = 0; i < Whole(count); i++)
        values[i] = parts[i] < 1 ? l.from + way * parts[i] : l.to;
}

void Scale(float* __restrict values, const double* __restrict factors, std::size_t count) {
    for (std::size_t i = 0; i < Whole(count); i++)
        values[i] = static_cast<float>(values[i] * factors[i]);
}

using Sums = float __attribute__((vector_size(kSlack * sizeof(float))));

/// Computes `side` outputs at a time, which share the filter's taps.
template<std::size_t side>
void FilterOf(const float* taps, std::size_t length, const float* frames, std::size_t step,
              float* out) {
    Sums sums[side]{};
    for (std::size_t k = 0; k < length; k += kSlack) {
        Sums tap, frame;
        __builtin_memcpy(&tap, taps + k, sizeof tap);
        for (std::size_t i = 0; i < side; i++) {
            __builtin_memcpy(&frame, frames + i * step + k, sizeof frame);
            sums[i] += tap * frame;
        }
    }
    if constexpr (side == 4) {
        const float* rows[side];
        for (std::size_t i = 0; i < side; i++)
            rows[i] = reinterpret_cast<const float*>(&sums[i]);
        Four total{};
        for (int lane = 0; lane < int(kSlack); lane += 4) {
            Four lanes[4];
            Columns(rows, lane, lanes);
            for (const Four& sum : lanes)
                total += sum;
        }
        __builtin_memcpy(out, &total, sizeof total);
        return;
    }
    for (std::size_t i = 0; i < side; i++) {
        float sum = 0;
        for (std::size_t lane = 0; lane < kSlack; lane++)
            sum += sums[i][lane];
        out[i] = sum;
    }
}

void Filter(const float* taps, std::size_t length, const float* frames, std::size_t step,
            float* out, std::size_t count) {
    constexpr std::size_t kSide = 4;
    std::size_t i = 0;
    for (; i + kSide <= count; i += kSide)
        FilterOf<kSide>(taps, length, frames + i * step, step, out + i);
    for (; i < count; i++)
        FilterOf<1>(taps, length, frames + i * step, step, out + i);
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

const BlockLoops VEXA_LOOPS_TABLE = {Accumulate, Moments, Waves,  Places, Cells,
                                     Steps,      Drifts,  Line,   LowCut, Parts,
                                     Ramp,       Scale,   Filter, Words,  VEXA_LOOPS_NAME};

} // namespace vexa
