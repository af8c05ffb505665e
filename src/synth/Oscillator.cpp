#include "synth/Oscillator.h"

#include <algorithm>

namespace vexa {

void Oscillator::Advance(Wave wave, double sine, double cosine, std::size_t count, double* space,
                         Coordinate& coordinate) noexcept {
    if (!even) {
        AdvanceUnevenly(wave, count, space);
        coordinate.steps = nullptr;
        coordinate.waves = space;
        return;
    }
    phase += static_cast<double>(count) * step;
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

void Oscillator::AdvanceUnevenly(Wave wave, std::size_t count, double* result) noexcept {
    std::array<double, kRoom> phases, sines, cosines;
    AccumulateUnevenly(phases.data(), count);
    Loops().Waves(phases.data(), sines.data(), cosines.data(), count);
    std::copy_n((wave == Wave::sine ? sines : cosines).data(), count, result);
}

} // namespace vexa
