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

/// A value on its way: from + (to - from) part when it has gone that part of it, `to` from 1 on.
struct RampLine {
    double from, to;
};

/// The samples that the loops compute in one go at most.
constexpr std::size_t kMostSamples = 64;
/// Every array of a block has room for so many more: the loops go on to a multiple of it, so that
/// they consist of whole vectors, and what stands there afterwards means nothing.
constexpr std::size_t kSlack = 16;
constexpr std::size_t kRoom = kMostSamples + kSlack;
/// Cells of kMostSamples samples that are computed in one go at most, where nothing changes in
/// between, and how many samples and places of an array these are.
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
    /// Where `steps` is not null, wave[i] is the sine after offset + i steps, or any other wave of
    /// that phase, whose value at the beginning is `value` and whose derivative by the phase is
    /// `slope` there; offset + count <= kMostSamples. Where it is null the waves are given.
    const StepWaves* steps;
    double value, slope;
    std::size_t offset;
    const double* waves;
    /// radius[i] = envelope[i] radius, or just radius where there is no envelope.
    double radius;
    const float* envelope;
    /// centre[i] = centre + i drift, or centres[i] where these are given.
    double centre, drift;
    const double* centres;
    float* place;
};

/// The wave at the beginning of each of several cells, and what times slopeSign is its derivative
/// by the phase there.
struct CellWaves {
    const double *values, *slopes;
    double slopeSign;
};

/// A changing speed: envelope[i] weight + rest at moment i, or envelope[i] weights[i] + rests[i]
/// where these are given, per sample of dt seconds.
struct Speed {
    const float* envelope;
    double weight, rest, dt;
    const double *weights, *rests;
};

/// A centre that drifts, by steps[i] after moment i.
struct Drift {
    /// The centre, which goes on to the next block.
    double* centre;
    /// The steps, in the place of which the centre is written for each moment.
    double* steps;
};

/// A voice's low-cut filter: the difference of two decaying sums.
struct LowCutFilter {
    /// The factor that is left of each sum after one sample.
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
    /// Writes the places of a coordinate with steps for so many whole cells, those of a cell
    /// `stride` floats after those of the one before. The wave begins each cell as `waves` says.
    void (*Cells)(const Coordinate& coordinate, const CellWaves& waves, std::size_t cells,
                  std::size_t stride);
    /// steps[i] = the way of moment i at that speed.
    void (*Steps)(const Speed& speed, double* steps, std::size_t count);
    /// Lets `number` centres drift, each addition rounded; several in turns, as each waits for its
    /// last sum.
    void (*Drifts)(const Drift* drifts, std::size_t number, std::size_t count);
    /// values[i] = the line at t[i], which is finite. No slack, any count.
    void (*Line)(const EnvelopeLine& line, const double* t, float* values, std::size_t count);
    /// Runs `voices` filters over their input, samples[k * count + i] for filter k at moment i, and
    /// adds their output to sum[i], filter after filter; for several cells one after the other, of
    /// which the next has its input `stride` floats and its sum `count` <= kMostSamples floats
    /// further on. Input
    /// counts as Heard says; a filter whose sums are not finite all the same starts afresh. True
    /// where input was beyond kMostHeard.
    bool (*LowCut)(LowCutFilter* const* filters, const float* samples, std::size_t voices,
                   std::size_t count, float* sum, std::size_t cells, std::size_t stride);
    /// parts[i] = (done + i) / length.
    void (*Parts)(std::size_t done, std::size_t length, double* parts, std::size_t count);
    /// values[i] = the ramp when it has gone parts[i].
    void (*Ramp)(const RampLine& line, const double* parts, double* values, std::size_t count);
    /// values[i] = values[i] factors[i], rounded.
    void (*Scale)(float* values, const double* factors, std::size_t count);
    /// out[i] is the sum of taps[k] frames[i step + k] for k < length, a multiple of kSlack, as
    /// that of kSlack sums side by side. No slack, any count.
    void (*Filter)(const float* taps, std::size_t length, const float* frames, std::size_t step,
                   float* out, std::size_t count);
    /// words[i] = values[i] as the word of a pixel (DrawPlane). No slack, any count.
    void (*Words)(const float* values, unsigned* words, std::size_t count);
    /// The name of the instruction set.
    const char* name;
};

/// Returns the loops that this machine can run, the fastest last.
std::span<const BlockLoops* const> RunnableLoops();
/// The fastest for the machine that this runs on.
VEXA_REALTIME const BlockLoops& Loops();

} // namespace vexa
