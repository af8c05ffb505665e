// SPDX-License-Identifier: GPL-3.0-or-later
// An oscillator is one of a voice's two, for x and for y.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"
#include "synth/Ears.h"
#include "synth/EqualSteps.h"

#include <cstddef>
#include <limits>

namespace vexa {

/// A phase that grows by equal steps, each addition rounded, and its sine and cosine over a block.
///
/// Where the rounded steps are equal too, sine and cosine come from the angle addition theorem:
/// from those of the phase at the beginning of the cell, which is the stretch of kMostSamples
/// samples that the block lies in, and from those of some steps, which are kept. So few sines are
/// computed, and none depends on where in a cell blocks are cut. Media thread.
class VEXA_REALTIME Oscillator {
  public:
    /// Returns the phase in radians, which is never wrapped.
    double Phase() const { return phase; }
    void Restart() { phase = 0; }

    /// Lets `count` samples go by whose waves nobody asks for, in place of Begin and Advance.
    void Pass(double newTurn, std::size_t newOffset, std::size_t count,
              const double* newFactors = nullptr) noexcept;

    /// Begins a block `offset` samples after its cell; `turn` is the phase's step. Answers the
    /// phase at the beginning of the cell, whose sine and cosine Advance needs. Where there are
    /// factors, the step at moment i is turn newFactors[i]; they must stand until Advance.
    double Begin(double newTurn, std::size_t newOffset,
                 const double* newFactors = nullptr) noexcept {
        turn = newTurn;
        offset = newOffset;
        factors = newFactors;
        even = false;
        if (factors)
            return phase;
        step = RoundedStep(phase, turn);
        // Exact where the steps are even.
        const double begin = phase - static_cast<double>(offset) * step;
        even = AddsTheSame(begin, turn, step, begin + static_cast<double>(kMostSamples) * step);
        return begin;
    }

    /// Begins `cells` whole cells at once, and writes the phases at their beginnings. False, and
    /// nothing is begun, where the steps are not the same in all of them.
    bool BeginCells(double newTurn, std::size_t cells, double* begins) noexcept {
        const double wide = RoundedStep(phase, newTurn);
        const double cell = static_cast<double>(kMostSamples) * wide;
        if (!AddsTheSame(phase, newTurn, wide, phase + static_cast<double>(cells) * cell))
            return false;
        for (std::size_t i = 0; i < cells; i++)
            begins[i] = phase + static_cast<double>(i) * cell;
        Begin(newTurn, 0);
        return true;
    }

    /// Which wave of the phase is wanted.
    enum class Wave { sine, cosine };
    /// Fills in the waves of a coordinate for the next `count` samples, with the sine and the
    /// cosine of what Begin answered. What is written to `space`, of kRoom values, must stand as
    /// long as the coordinate is used.
    void Advance(Wave wave, double sine, double cosine, std::size_t count, double* space,
                 Coordinate& coordinate) noexcept;
    /// Does the same for both ears, with a space each; all else of the coordinates stays as it is.
    void Advance(Wave wave, const EarTurn& turn, double sine, double cosine, std::size_t count,
                 double* leftSpace, double* rightSpace, Coordinate& left,
                 Coordinate& right) noexcept;

    /// Lets the cells that were begun go by; the waves of their steps.
    const StepWaves* PassCells(std::size_t cells) noexcept {
        Coordinate coordinate;
        Advance(Wave::sine, 0, 0, cells * kMostSamples, nullptr, coordinate);
        return coordinate.steps;
    }

  private:
    void UseSteps(Wave wave, double sine, double cosine, Coordinate& coordinate) noexcept;
    void AccumulateUnevenly(double* phases, std::size_t count) noexcept;

    double phase = 0;
    double turn = 0;
    const double* factors = nullptr;
    std::size_t offset = 0;
    /// What adding `turn` adds to the phase in this cell, and whether it always does.
    double step = 0;
    bool even = false;
    /// The step of which `waves` has the sines and cosines.
    double keptStep = std::numeric_limits<double>::quiet_NaN();
    StepWaves waves;
};

} // namespace vexa
