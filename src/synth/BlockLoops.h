// The loops over a block of samples, compiled once per instruction set.
//
// All instruction sets give the same bits: the loops are written without fused products, and every
// operation in them is exact or rounded as IEEE 754 says.
#pragma once

#include <cstddef>

namespace vexa {

/// A straight line: base + (t - origin) rise / run.
struct EnvelopeLine {
    double base, origin, rise, run;
};

/// The low-cut filters of several voices side by side.
struct LowCutLanes {
    /// A multiple of kLaneStep that holds every slot of the voice table.
    static constexpr std::size_t kMost = 24;
    static constexpr std::size_t kLaneStep = 8;

    float hpa[kMost], hpb[kMost], hpgain[kMost];
    float hpsum0[kMost], hpsum1[kMost];
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
    /// Runs `lanes` filters, a multiple of kLaneStep, over `count` moments. samples[i * lanes + k]
    /// is the input of filter k at moment i and becomes its output. Input that is not finite
    /// counts as 0: it would stay in the accumulators for ever.
    void (*LowCut)(LowCutLanes& filters, float* samples, std::size_t lanes, std::size_t count);
    /// to[i] = from[i], rounded.
    void (*Narrow)(const double* from, float* to, std::size_t count);
    /// Of the instruction set.
    const char* name;
};

/// For the machine that this runs on.
const BlockLoops& Loops();

} // namespace vexa
