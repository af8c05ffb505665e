// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Oscillator.h"

#include "kits/support/RealtimeMark.h"

#include <algorithm>

namespace vexa {

namespace {

/// Sets the coordinate's own waves to those of the phases.
VEXA_REALTIME void UseWaves(Oscillator::Wave wave, const double* phases, std::size_t count,
                            double* space, Coordinate& coordinate) noexcept {
    std::array<double, kRoom> sines, cosines;
    Loops().Waves(phases, sines.data(), cosines.data(), count);
    std::copy_n((wave == Oscillator::Wave::sine ? sines : cosines).data(), count, space);
    coordinate.steps = nullptr;
    coordinate.waves = space;
}

} // namespace

void Oscillator::Advance(Wave wave, double sine, double cosine, std::size_t count, double* space,
                         Coordinate& coordinate) noexcept {
    if (even) {
        phase += static_cast<double>(count) * step;
        return UseSteps(wave, sine, cosine, coordinate);
    }
    std::array<double, kRoom> phases;
    AccumulateUnevenly(phases.data(), count);
    UseWaves(wave, phases.data(), count, space, coordinate);
}

void Oscillator::Advance(Wave wave, const EarTurn& ears, double sine, double cosine,
                         std::size_t count, double* leftSpace, double* rightSpace, Coordinate& left,
                         Coordinate& right) noexcept {
    if (even && !ears.angles) {
        phase += static_cast<double>(count) * step;
        const EarTurn::Heard heard = ears.Of(sine, cosine);
        UseSteps(wave, heard.leftSine, heard.leftCosine, left);
        UseSteps(wave, heard.rightSine, heard.rightCosine, right);
        return;
    }
    std::array<double, kRoom> phases, earlier, later;
    AccumulateUnevenly(phases.data(), count);
    for (std::size_t i = 0; i < count; i++) {
        earlier[i] = phases[i] - ears.At(i);
        later[i] = phases[i] + ears.At(i);
    }
    UseWaves(wave, earlier.data(), count, leftSpace, left);
    UseWaves(wave, later.data(), count, rightSpace, right);
}

/// Lets the coordinate compute its wave from the steps; `sine` and `cosine` belong to the phase at
/// the beginning of the cell.
void Oscillator::UseSteps(Wave wave, double sine, double cosine, Coordinate& coordinate) noexcept {
    if (step != keptStep) {
        std::array<double, 8> phases, eightPhases;
        for (std::size_t i = 0; i < 8; i++) {
            phases[i] = static_cast<double>(i) * step;
            eightPhases[i] = 8 * phases[i];
        }
        Loops().Waves(phases.data(), waves.sines, waves.cosines, 8);
        Loops().Waves(eightPhases.data(), waves.eightSines, waves.eightCosines, 8);
        keptStep = step;
    }
    coordinate.steps = &waves;
    coordinate.offset = offset;
    coordinate.value = wave == Wave::sine ? sine : cosine;
    coordinate.slope = wave == Wave::sine ? cosine : -sine;
}

void Oscillator::Pass(double newTurn, std::size_t newOffset, std::size_t count,
                      const double* newFactors) noexcept {
    Begin(newTurn, newOffset, newFactors);
    if (even) {
        phase += static_cast<double>(count) * step;
        return;
    }
    std::array<double, kRoom> phases;
    AccumulateUnevenly(phases.data(), count);
}

void Oscillator::AccumulateUnevenly(double* phases, std::size_t count) noexcept {
    if (!factors) {
        phase = Loops().Accumulate(phase, turn, phases, count);
        return;
    }
    for (std::size_t i = 0; i < count; i++) {
        phases[i] = phase;
        phase += turn * factors[i];
    }
}

} // namespace vexa
