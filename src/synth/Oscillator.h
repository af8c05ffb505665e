// SPDX-License-Identifier: GPL-3.0-or-later
// The oscillator of one coordinate; each voice has one for x and one for y.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"
#include "synth/Ears.h"
#include "synth/EqualSteps.h"

#include <cstddef>
#include <limits>

namespace vexa {

/// Accumulates a phase by equal steps, each addition rounded, and computes its sine and cosine over
/// a block.
///
/// If the rounded steps are equal too, sine and cosine come from the angle addition theorem: from
/// those of the phase at the beginning of the cell and from cached ones of multiples of the step. A
/// cell is the aligned stretch of kMostSamples samples in which the block lies. Few sines are
/// computed this way, and none depends on where blocks split a cell. Media thread.
class VEXA_REALTIME Oscillator {
  public:
    /// Returns the phase in radians, which is never wrapped.
    double Phase() const { return phase; }
    void Restart() { phase = 0; }

    /// Advances by `count` samples without computing waves, in place of Begin and Advance.
    void Pass(double newTurn, std::size_t newOffset, std::size_t count,
              const double* newFactors = nullptr) noexcept;

    /// Begins a block `newOffset` samples after the beginning of its cell; `newTurn` is the phase
    /// step in radians. Returns the phase at the beginning of the cell, whose sine and cosine
    /// Advance needs. If `newFactors` is not null, the step at sample i is newTurn * newFactors[i],
    /// and the array must stay valid until Advance; the returned phase is then the current one.
    double Begin(double newTurn, std::size_t newOffset,
                 const double* newFactors = nullptr) noexcept {
        turn = newTurn;
        offset = newOffset;
        factors = newFactors;
        even = false;
        if (factors)
            return phase;
        step = RoundedStep(phase, turn);
        // This is exact if the steps are even.
        const double begin = phase - static_cast<double>(offset) * step;
        even = AddsTheSame(begin, turn, step, begin + static_cast<double>(kMostSamples) * step);
        return begin;
    }

    /// Begins `cells` whole cells at once and writes the phases at their beginnings. Returns false
    /// and begins nothing if the rounded steps are not the same in all of them.
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

    /// The wave of the phase that Advance computes.
    enum class Wave { sine, cosine };
    /// Fills in the waves of a coordinate for the next `count` samples, with the sine and the
    /// cosine of the phase that Begin returned. `space` has room for kRoom values and must stay
    /// unchanged as long as the coordinate is used.
    void Advance(Wave wave, double sine, double cosine, std::size_t count, double* space,
                 Coordinate& coordinate) noexcept;
    /// Does the same for both ears, with one space each; the other fields of the coordinates stay
    /// unchanged.
    void Advance(Wave wave, const EarTurn& turn, double sine, double cosine, std::size_t count,
                 double* leftSpace, double* rightSpace, Coordinate& left,
                 Coordinate& right) noexcept;

    /// Advances past the cells that BeginCells began. Returns the waves of their steps.
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
    /// The increment that adding `turn` makes after rounding, and whether it is the same throughout
    /// this cell.
    double step = 0;
    bool even = false;
    /// The step to which the sines and cosines in `waves` belong.
    double keptStep = std::numeric_limits<double>::quiet_NaN();
    StepWaves waves;
};

} // namespace vexa
