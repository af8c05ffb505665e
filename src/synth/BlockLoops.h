// SPDX-License-Identifier: GPL-3.0-or-later
// The loops over a block of samples, compiled once per instruction set.
//
// All instruction sets give the same bits: the loops are written without fused products, and every
// operation in them is exact or rounded as IEEE 754 says.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstddef>
#include <span>

namespace vexa {

/// A straight line: base + (t - origin) rise / run.
struct EnvelopeLine {
    double base, origin, rise, run;
};

/// A ramp: the value is from + (to - from) part after the fraction `part` of the way, and `to` from
/// fraction 1 on.
struct RampLine {
    double from, to;
};

/// The largest number of samples in a block.
constexpr std::size_t kMostSamples = 64;
/// Every array of a block has room for this many more values: the loops continue to a multiple of
/// it so that they consist of whole vectors. The extra values are meaningless.
constexpr std::size_t kSlack = 16;
constexpr std::size_t kRoom = kMostSamples + kSlack;
/// The largest number of cells, of kMostSamples samples each, that are computed at once while
/// nothing changes in between; and the corresponding number of samples and size of an array.
constexpr std::size_t kMostCells = 8;
constexpr std::size_t kCellSamples = kMostCells * kMostSamples;
constexpr std::size_t kCellRoom = kCellSamples + kSlack;

/// Sines and cosines of the multiples of a phase's step: of 0 to 7 steps, and of 0 to 7 times
/// eight.
struct StepWaves {
    alignas(64) double sines[8], cosines[8], eightSines[8], eightCosines[8];
};

/// One coordinate of an orbit over a block: place[i] = radius[i] wave[i] + centre[i].
struct Coordinate {
    /// If `steps` is not null, wave[i] is the value after offset + i steps of a sine of any phase:
    /// after 0 steps its value is `value`, and its derivative by the phase is `slope`; offset +
    /// count <= kMostSamples. If `steps` is null, `waves` contains the waves.
    const StepWaves* steps;
    double value, slope;
    std::size_t offset;
    const double* waves;
    /// radius[i] = envelope[i] radius, or just radius if `envelope` is null.
    double radius;
    const float* envelope;
    /// centre[i] = centre + i drift, or centres[i] if that is not null.
    double centre, drift;
    const double* centres;
    float* place;
};

/// The wave's value at the beginning of each of several cells, and its derivative by the phase
/// there, which is the slope times slopeSign.
struct CellWaves {
    const double *values, *slopes;
    double slopeSign;
};

/// A changing speed in units per second: envelope[i] weight + rest at moment i, or envelope[i]
/// weights[i] + rests[i] if these are not null. A sample lasts dt seconds.
struct Speed {
    const float* envelope;
    double weight, rest, dt;
    const double *weights, *rests;
};

/// A centre that drifts by steps[i] after sample i.
struct Drift {
    /// The centre; updated to its value at the next block.
    double* centre;
    /// The steps; overwritten with the centre at each sample.
    double* steps;
};

/// A voice's low-cut filter: the difference of two decaying sums.
struct LowCutFilter {
    /// The decay factor of each sum per sample.
    float hpa = 0, hpb = 0;
    /// The gain of the sums' difference, chosen so that the response at frequency 0 is exactly 0.
    float hpgain = 0;
    float hpsum0 = 0, hpsum1 = 0;
    /// The last output.
    float out = 0;
};

/// The loops for one instruction set. Arrays do not overlap, and count <= kCellSamples, unless a
/// loop says otherwise. Any thread, real-time safe.
struct BlockLoops {
    /// sums[i] is `start` after i additions of `step`, each rounded; returns the sum after `count`.
    double (*Accumulate)(double start, double step, double* sums, std::size_t count);
    /// Does the same, with each of the sums that are written rounded to a float.
    double (*Moments)(double start, double step, double* sums, std::size_t count);
    /// Computes the sines and cosines of `count` phases, of which there may be any number. Their
    /// error is below 1e-15. The arrays need no slack.
    void (*Waves)(const double* phase, double* sines, double* cosines, std::size_t count);
    /// Writes the places of `number` coordinates, one after the other, each rounded; count <=
    /// kMostSamples.
    void (*Places)(const Coordinate* coordinates, std::size_t number, std::size_t count);
    /// Writes the places of a coordinate with `steps` for `cells` whole cells. Each cell's places
    /// begin `stride` floats after those of the previous one, and its wave begins at the value and
    /// slope in `waves`.
    void (*Cells)(const Coordinate& coordinate, const CellWaves& waves, std::size_t cells,
                  std::size_t stride);
    /// steps[i] = the distance travelled in sample i at that speed.
    void (*Steps)(const Speed& speed, double* steps, std::size_t count);
    /// Moves `number` drifting centres, each addition rounded; several are interleaved, because
    /// each addition waits for the previous sum.
    void (*Drifts)(const Drift* drifts, std::size_t number, std::size_t count);
    /// values[i] = the line at t[i], which is finite. No slack, any count.
    void (*Line)(const EnvelopeLine& line, const double* t, float* values, std::size_t count);
    /// Runs `voices` filters over their input, samples[k * count + i] for filter k at moment i, and
    /// adds their output to sum[i], filter after filter. Runs several cells one after the other:
    /// the next cell has its input `stride` floats and its sum `count` <= kMostSamples floats
    /// further on. Input is clamped as by Heard; a filter whose sums are nevertheless not finite is
    /// reset. Returns true if input exceeded kMostHeard.
    bool (*LowCut)(LowCutFilter* const* filters, const float* samples, std::size_t voices,
                   std::size_t count, float* sum, std::size_t cells, std::size_t stride);
    /// parts[i] = (done + i) / length.
    void (*Parts)(std::size_t done, std::size_t length, double* parts, std::size_t count);
    /// values[i] = the ramp's value after the fraction parts[i].
    void (*Ramp)(const RampLine& line, const double* parts, double* values, std::size_t count);
    /// values[i] = values[i] factors[i], rounded.
    void (*Scale)(float* values, const double* factors, std::size_t count);
    /// out[i] is the sum of taps[k] frames[i step + k] for k < length, a multiple of kSlack,
    /// accumulated in kSlack parallel sums. No slack, any count.
    void (*Filter)(const float* taps, std::size_t length, const float* frames, std::size_t step,
                   float* out, std::size_t count);
    /// words[i] = values[i] as the word of a pixel (DrawPlane). No slack, any count.
    void (*Words)(const float* values, unsigned* words, std::size_t count);
    /// The name of the instruction set.
    const char* name;
};

/// Returns the loops that this machine can run, the fastest last.
std::span<const BlockLoops* const> RunnableLoops();
/// Returns the fastest loops for this machine.
VEXA_REALTIME const BlockLoops& Loops();

} // namespace vexa
