#include "synth/BlockLoops.h"

#include <array>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using vexa::BlockLoops;
using vexa::kMostSamples;

/// Each test runs for every instruction set that this machine has.
class Loops : public testing::TestWithParam<const BlockLoops*> {};

INSTANTIATE_TEST_SUITE_P(All, Loops,
                         testing::ValuesIn(vexa::RunnableLoops().begin(),
                                           vexa::RunnableLoops().end()),
                         [](const auto& parameter) { return parameter.param->name; });

TEST_P(Loops, AccumulateGivesTheBitsOfOneAdditionAfterTheOther) {
    const double edge = 1024;
    const struct {
        double start, step;
    } sums[] = {{0, 1.0 / 44100},
                {3, 0.0627},
                {edge - 1, 0.0627},
                {edge, -0.0627},
                {edge - 0.5, std::nextafter(0.5, 0)},
                {-edge + 1, -0.1},
                {-0.3, 0.01},
                {1, 0x1p-53},
                {1, 0x1.8p-52},
                {std::nextafter(2.0, 0), 0x1p-53},
                {5, 0},
                {1e300, 1e299},
                {std::nan(""), 1}};
    for (const auto& sum : sums) {
        std::array<double, kMostSamples> is;
        const double end = GetParam()->Accumulate(sum.start, sum.step, is.data(), is.size());
        double should = sum.start;
        for (std::size_t i = 0; i < is.size(); i++) {
            ASSERT_TRUE(is[i] == should || std::isnan(should))
                << sum.start << " + " << i << " " << sum.step;
            should += sum.step;
        }
        EXPECT_TRUE(end == should || std::isnan(should)) << sum.start << ", " << sum.step;
    }
}

TEST_P(Loops, SineAndCosineAreExactToTheTwelfthDigit) {
    std::mt19937_64 random(1);
    const std::array<float, kMostSamples> ones = [] {
        std::array<float, kMostSamples> values;
        values.fill(1);
        return values;
    }();
    // A large radius shows more digits of the sine than a float of size 1 has; the centre takes
    // the leading ones away.
    constexpr double kRadius = 1e9;
    for (const double range : {1.6, 100.0, 1e6, 9.9e9, 1e15}) {
        double worst = 0;
        for (int repeat = 0; repeat < 200; repeat++) {
            std::array<double, kMostSamples> phase, sines, cosines;
            std::array<float, kMostSamples> x, y;
            for (std::size_t i = 0; i < phase.size(); i++) {
                phase[i] = (double(random() >> 11) * 0x1p-52 - 1) * range;
                cosines[i] = -kRadius * std::cos(phase[i]);
                sines[i] = -kRadius * std::sin(phase[i]);
            }
            GetParam()->CosinePlaces(phase.data(), ones.data(), kRadius, cosines.data(), x.data(),
                                     phase.size());
            GetParam()->SinePlaces(phase.data(), ones.data(), kRadius, sines.data(), y.data(),
                                   phase.size());
            for (std::size_t i = 0; i < phase.size(); i++)
                worst = std::max({worst, std::abs(x[i] / kRadius), std::abs(y[i] / kRadius)});
        }
        EXPECT_LT(worst, 1e-12) << "for phases up to " << range;
    }
}

TEST_P(Loops, LowCutIsTheFormulaAndTheSameOnAllMachines) {
    constexpr std::size_t kVoices = 7;
    std::mt19937 random(1);
    std::array<vexa::LowCutFilter, kVoices> is, should, best;
    std::array<vexa::LowCutFilter*, kVoices> filters, bestFilters;
    for (std::size_t k = 0; k < kVoices; k++) {
        const float decay = std::exp2(-0.001F * float(1 << k));
        is[k] = {decay, decay * decay, (1 - decay * decay) / decay, 3, -2};
        should[k] = best[k] = is[k];
        filters[k] = &is[k];
        bestFilters[k] = &best[k];
    }
    for (int block = 0; block < 100; block++) {
        const std::size_t count = 1 + random() % kMostSamples;
        std::vector<float> input(kVoices * count);
        for (float& s : input)
            s = random() % 100 == 0 ? INFINITY : float(random()) / 2147483648.0F - 1;
        std::vector<float> output = input;
        std::vector<float> bestOutput = input;
        GetParam()->LowCut(filters.data(), output.data(), kVoices, count);
        vexa::Loops().LowCut(bestFilters.data(), bestOutput.data(), kVoices, count);
        EXPECT_EQ(output, bestOutput);
        for (std::size_t k = 0; k < kVoices; k++) {
            for (std::size_t i = 0; i < count; i++) {
                vexa::LowCutFilter& f = should[k];
                const float s = std::isfinite(input[k * count + i]) ? input[k * count + i] : 0;
                const double w0 = double(f.hpa) * f.hpsum0 + s;
                const double w1 = double(f.hpb) * f.hpsum1 + s;
                f.hpsum0 = float(w0);
                f.hpsum1 = float(w1);
                ASSERT_NEAR(output[k * count + i], float(s - f.hpgain * (w0 - w1)), 1e-7);
            }
        }
    }
}

} // namespace
