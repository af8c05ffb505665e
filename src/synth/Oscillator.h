// One of a voice's two oscillators.
#pragma once

#include "synth/BlockLoops.h"

#include <array>
#include <cstddef>
#include <limits>

namespace vexa {

/// A phase that grows by equal steps, each addition rounded, and its sine and cosine over a block.
///
/// Where the rounded steps are equal too, sine and cosine come from the angle addition theorem:
/// from those of the phase at the beginning of the cell, which is the stretch of kMostSamples
/// samples that the block lies in, and from those of 0, 1, 2... steps, which are kept. So few sines
/// are computed, and none depends on where in a cell blocks are cut. Media thread.
class Oscillator {
  public:
    /// Radians, never wrapped.
    double Phase() const { return phase; }
    void Restart() { phase = 0; }

    /// Begins a block `offset` samples after its cell; `turn` is the phase's step. Answers the
    /// phase at the beginning of the cell, whose waves Advance needs.
    double Begin(double turn, std::size_t offset) noexcept;

    /// The waves of a block: sin(phase) as cosine sines[i] + sine cosines[i], cos(phase) as
    /// cosine cosines[i] - sine sines[i].
    struct Waves {
        double sine, cosine;
        const double* sines;
        const double* cosines;
    };
    /// Where the waves of a block whose steps are not equal stand.
    struct Space {
        alignas(64) std::array<double, kRoom> phase, sines, cosines;
    };
    /// The waves of the next `count` samples, with the sine and the cosine of what Begin answered.
    /// They stand until `space` is used again.
    Waves Advance(double sine, double cosine, std::size_t count, Space& space) noexcept;

  private:
    double phase = 0;
    double turn = 0;
    std::size_t offset = 0;
    /// What adding `turn` adds in this cell, and whether it always does.
    double step = 0;
    bool even = false;
    /// Of the multiples of keptStep.
    double keptStep = std::numeric_limits<double>::quiet_NaN();
    alignas(64) std::array<double, kRoom> sines, cosines;
};

} // namespace vexa
