#include "synth/Oscillator.h"

#include "synth/EqualSteps.h"

namespace vexa {

double Oscillator::Begin(double newTurn, std::size_t newOffset) noexcept {
    turn = newTurn;
    offset = newOffset;
    step = RoundedStep(phase, turn);
    // Exact where the steps are even.
    const double begin = phase - static_cast<double>(offset) * step;
    even = AddsTheSame(begin, turn, step, begin + static_cast<double>(kMostSamples) * step);
    return begin;
}

Oscillator::Waves Oscillator::Advance(double sine, double cosine, std::size_t count,
                                      Space& space) noexcept {
    if (!even) {
        phase = Loops().Accumulate(phase, turn, space.phase.data(), count);
        Loops().Waves(space.phase.data(), space.sines.data(), space.cosines.data(), count);
        return {0, 1, space.sines.data(), space.cosines.data()};
    }
    phase += static_cast<double>(count) * step;
    if (step != keptStep) {
        for (std::size_t i = 0; i < kRoom; i++)
            space.phase[i] = static_cast<double>(i) * step;
        Loops().Waves(space.phase.data(), sines.data(), cosines.data(), kRoom);
        keptStep = step;
    }
    return {sine, cosine, sines.data() + offset, cosines.data() + offset};
}

} // namespace vexa
