// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Oscillator.h"

#include <array>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace {

using vexa::kMostSamples;
using vexa::kRoom;
using vexa::Oscillator;

/// The phase must have the bits of successive additions, and the waves be exact to the twelfth
/// digit, through changes of the step and in blocks of any length.
TEST(Oscillator, FollowsTheChainOfAdditionsWhereverBlocksAreCut) {
    // The centre cancels the leading digits, so that a float shows the lower ones.
    constexpr double kRadius = 1e9;
    std::mt19937 random(1);
    for (const Oscillator::Wave wave : {Oscillator::Wave::sine, Oscillator::Wave::cosine}) {
        for (const double turn : {0.0627, 2.9, -0.3, 0.0, 0x1p-20, 1e5}) {
            Oscillator oscillator;
            double phase = 0;
            double worst = 0;
            std::size_t offset = 0;
            for (int block = 0; block < 2000; block++) {
                const double step = block < 1500 ? turn : turn * 1.5;
                const std::size_t count = 1 + random() % (kMostSamples - offset);
                const double begin = oscillator.Begin(step, offset);
                double sine = 0;
                double cosine = 0;
                vexa::Loops().Waves(&begin, &sine, &cosine, 1);
                std::array<double, kRoom> space, centres;
                std::array<float, kRoom> place;
                vexa::Coordinate c{};
                oscillator.Advance(wave, sine, cosine, count, space.data(), c);
                for (std::size_t i = 0; i < count; i++) {
                    centres[i] = -kRadius * (wave == Oscillator::Wave::sine ? std::sin(phase)
                                                                            : std::cos(phase));
                    phase += step;
                }
                c.radius = kRadius;
                c.centres = centres.data();
                c.place = place.data();
                vexa::Loops().Places(&c, 1, count);
                for (std::size_t i = 0; i < count; i++)
                    worst = std::max(worst, std::abs(place[i] / kRadius));
                ASSERT_EQ(oscillator.Phase(), phase) << turn << ", block " << block;
                offset = (offset + count) % kMostSamples;
            }
            EXPECT_LT(worst, 1e-12) << turn;
        }
    }
}

} // namespace
