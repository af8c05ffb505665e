// The loops over a block of samples, compiled once per instruction set.
//
// All instruction sets give the same bits: the loops are written without fused products, and every
// operation in them is exact or rounded as IEEE 754 says.
#pragma once

#include <cstddef>
#include <span>

namespace vexa {

/// A straight line: base + (t - origin) rise / run.
struct EnvelopeLine {
    double base, origin, rise, run;
};

/// Samples that the loops compute in one go at most.
constexpr std::size_t kMostSamples = 64;

/// A voice's low-cut filter: the difference of two decaying sums.
struct LowCutFilter {
    /// How much of a sum is left after one sample.
    float hpa = 0, hpb = 0;
    /// Of the sums' difference, so that the response at frequency 0 is exactly 0.
    float hpgain = 0;
    float hpsum0 = 0, hpsum1 = 0;
};

/// Loops for one instruction set. Arrays do not overlap. Any thread, real-time safe.
struct BlockLoops {
    /// sums[i] is `start` after i additions of `step`, each rounded; returns the sum after `count`.
    double (*Accumulate)(double start, double step, double* sums, std::size_t count);
    /// place[i] = envelope[i] radius cos(phase[i]) + centre[i]. The cosine's error is below 1e-12
    /// for phases up to 1e10; beyond, it is the C library's.
    void (*CosinePlaces)(const double* phase, const float* envelope, double radius,
                         const double* centre, float* place, std::size_t count);
    /// The same with the sine.
    void (*SinePlaces)(const double* phase, const float* envelope, double radius,
                       const double* centre, float* place, std::size_t count);
    /// values[i] = the line at t[i].
    void (*Line)(const EnvelopeLine& line, const float* t, float* values, std::size_t count);
    /// Runs `voices` filters over their input, samples[k * count + i] for filter k at moment i,
    /// which becomes their output. Input that is not finite counts as 0: it would stay in the sums
    /// for ever. count <= kMostSamples.
    void (*LowCut)(LowCutFilter* const* filters, float* samples, std::size_t voices,
                   std::size_t count);
    /// to[i] = from[i], rounded.
    void (*Narrow)(const double* from, float* to, std::size_t count);
    /// words[i] = values[i] as the word of a pixel (DrawPlane).
    void (*Words)(const float* values, unsigned* words, std::size_t count);
    /// Of the instruction set.
    const char* name;
};

/// Those that this machine can run, the fastest last.
std::span<const BlockLoops* const> RunnableLoops();
/// The fastest for the machine that this runs on.
const BlockLoops& Loops();

} // namespace vexa
