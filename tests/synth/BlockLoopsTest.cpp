// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/BlockLoops.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include <gtest/gtest.h>

namespace {

using vexa::BlockLoops;
using vexa::kMostSamples;
using vexa::kRoom;

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

TEST_P(Loops, SineAndCosineAreExactToTheFifteenthDigit) {
    std::mt19937_64 random(1);
    for (const double range : {1.6, 100.0, 1e6, 9.9e9, 1e15}) {
        double worst = 0;
        for (int repeat = 0; repeat < 200; repeat++) {
            std::array<double, kRoom> phase, sines, cosines;
            for (double& p : phase)
                p = (double(random() >> 11) * 0x1p-52 - 1) * range;
            GetParam()->Waves(phase.data(), sines.data(), cosines.data(), phase.size());
            for (std::size_t i = 0; i < phase.size(); i++)
                worst = std::max({worst, std::abs(sines[i] - std::sin(phase[i])),
                                  std::abs(cosines[i] - std::cos(phase[i]))});
        }
        EXPECT_LT(worst, 1e-15) << "for phases up to " << range;
    }
}

/// Covers each kind of wave, radius and centre, over blocks of any length.
TEST_P(Loops, PlacesAreRadiusTimesWavePlusCentre) {
    constexpr double kStep = 0.0627;
    constexpr double kBegin = 0.5;
    vexa::StepWaves steps;
    std::array<double, kRoom> waves, centres;
    std::array<float, kRoom> envelope, place;
    for (std::size_t i = 0; i < 8; i++) {
        steps.sines[i] = std::sin(double(i) * kStep);
        steps.cosines[i] = std::cos(double(i) * kStep);
        steps.eightSines[i] = std::sin(double(8 * i) * kStep);
        steps.eightCosines[i] = std::cos(double(8 * i) * kStep);
    }
    for (std::size_t i = 0; i < kRoom; i++) {
        waves[i] = std::cos(double(i));
        centres[i] = double(i * i) / 7;
        envelope[i] = float(i) / 11;
    }
    for (const auto& [offset, count] : {std::pair(0, 64), {8, 56}, {8, 17}, {3, 61}, {63, 1}}) {
        for (int ways = 0; ways < 16; ways++) {
            vexa::Coordinate c{};
            c.steps = ways & 1 ? &steps : nullptr;
            c.value = std::cos(kBegin);
            c.slope = -std::sin(kBegin);
            c.offset = std::size_t(offset);
            c.waves = waves.data();
            c.radius = 1.7;
            c.envelope = ways & 2 ? envelope.data() : nullptr;
            c.centre = -3;
            c.drift = ways & 8 ? 0 : 0.01;
            c.centres = ways & 4 ? centres.data() : nullptr;
            c.place = place.data();
            GetParam()->Places(&c, 1, std::size_t(count));
            for (std::size_t i = 0; i < std::size_t(count); i++) {
                const double wave =
                    c.steps ? std::cos(kBegin + double(std::size_t(offset) + i) * kStep) : waves[i];
                const double radius = c.envelope ? envelope[i] * 1.7 : 1.7;
                const double centre = c.centres ? centres[i] : -3 + double(i) * c.drift;
                ASSERT_NEAR(place[i], radius * wave + centre, 1e-7 * (1 + std::abs(place[i])))
                    << offset << ' ' << ways << ' ' << i;
            }
        }
    }
}

/// For whole cells, whose beginnings lie on the same lines, also to the last bit.
TEST_P(Loops, PlacesOfCellsAreThoseOfEachCell) {
    constexpr std::size_t kCells = 5, kStride = 100;
    std::mt19937_64 random(1);
    const auto number = [&random] { return double(random() >> 11) * 0x1p-52 - 1; };
    std::array<float, kCells * kMostSamples> envelope;
    std::array<double, kCells * kMostSamples> centres;
    std::generate(envelope.begin(), envelope.end(), [&] { return float(number()); });
    std::generate(centres.begin(), centres.end(), number);
    for (int way = 0; way < 6; way++) {
        const double drift = way % 3 == 1 ? 0x1p-20 : 0.0;
        vexa::StepWaves steps;
        for (double* waves : {steps.sines, steps.cosines, steps.eightSines, steps.eightCosines})
            std::generate_n(waves, 8, number);
        std::array<double, kCells> values, slopes;
        std::generate(values.begin(), values.end(), number);
        std::generate(slopes.begin(), slopes.end(), number);
        std::array<float, kCells * kStride> places;
        std::array<float, kRoom> place;
        vexa::Coordinate whole{};
        whole.steps = &steps;
        whole.radius = 1.7;
        whole.envelope = way >= 3 ? envelope.data() : nullptr;
        whole.centre = -0.75;
        whole.drift = drift;
        whole.centres = way % 3 == 2 ? centres.data() : nullptr;
        whole.place = places.data();
        GetParam()->Cells(whole, {values.data(), slopes.data(), -1}, kCells, kStride);
        for (std::size_t n = 0; n < kCells; n++) {
            const std::size_t first = n * kMostSamples;
            vexa::Coordinate c = whole;
            c.value = values[n];
            c.slope = -slopes[n];
            c.envelope = whole.envelope ? &envelope[first] : nullptr;
            c.centre = -0.75 + double(first) * drift;
            c.centres = whole.centres ? &centres[first] : nullptr;
            c.place = place.data();
            vexa::RunnableLoops().front()->Places(&c, 1, kMostSamples);
            for (std::size_t i = 0; i < kMostSamples; i++)
                ASSERT_EQ(places[n * kStride + i], place[i]) << way << ' ' << n << ' ' << i;
        }
    }
}

TEST_P(Loops, DriftsAddTheirSpeedsOneAfterTheOther) {
    constexpr std::size_t kMost = 15;
    std::array<std::array<float, kRoom>, kMost> envelopes;
    std::array<std::array<double, kRoom>, kMost> centres;
    // Weights that go from 0.2 to 1.7 within 40 samples, of which 3 have passed.
    std::array<double, kRoom> parts, weights, rests;
    rests.fill(-0.7);
    GetParam()->Parts(3, 40, parts.data(), 50);
    GetParam()->Ramp({0.2, 1.7}, parts.data(), weights.data(), 50);
    for (std::size_t number = 1; number <= kMost; number++) {
        std::array<double, kMost> is, should;
        std::vector<vexa::Drift> drifts;
        for (std::size_t k = 0; k < number; k++) {
            for (std::size_t i = 0; i < kRoom; i++)
                envelopes[k][i] = float(std::sin(double(i + 9 * k)));
            is[k] = should[k] = double(k);
            const bool varies = k % 3 == 1;
            GetParam()->Steps({envelopes[k].data(), 0.3 * double(k), 0.1, 1.0 / 44100,
                               varies ? weights.data() : nullptr, varies ? rests.data() : nullptr},
                              centres[k].data(), 50);
            drifts.push_back({&is[k], centres[k].data()});
        }
        GetParam()->Drifts(drifts.data(), number, 50);
        for (std::size_t k = 0; k < number; k++) {
            for (std::size_t i = 0; i < 50; i++) {
                ASSERT_EQ(centres[k][i], should[k]);
                const double place = double(i + 3);
                const double weight = k % 3 != 1   ? 0.3 * double(k)
                                      : place < 40 ? 0.2 + (1.7 - 0.2) * (place / 40)
                                                   : 1.7;
                should[k] +=
                    1.0 / 44100 * (envelopes[k][i] * weight + (k % 3 == 1 ? rests[0] : 0.1));
            }
            EXPECT_EQ(is[k], should[k]);
        }
    }
}

TEST_P(Loops, LineIsTheFormulaToTheLastBit) {
    std::mt19937_64 random(3);
    const auto any = [&random](int exponents) {
        const double significand = std::ldexp(double(random() >> 11), -52) - 1;
        return float(std::ldexp(significand, int(random() % unsigned(2 * exponents)) - exponents));
    };
    const auto expectFormula = [](const vexa::EnvelopeLine& l, const std::vector<double>& t) {
        std::vector<float> values(t.size());
        GetParam()->Line(l, t.data(), values.data(), t.size());
        for (std::size_t i = 0; i < t.size(); i++) {
            const auto should = float(l.base + (t[i] - l.origin) * l.rise / l.run);
            ASSERT_TRUE(should == values[i] ? std::signbit(should) == std::signbit(values[i])
                                            : std::isnan(should) && std::isnan(values[i]))
                << t[i] << ' ' << l.base << ' ' << l.origin << ' ' << l.rise << ' ' << l.run;
        }
    };
    // Base 0: only the conversion to float rounds the quotient.
    for (int i = 0; i < 3000; i++) {
        const int exponents = i % 3 == 0 ? 120 : 4;
        std::vector<double> t(67);
        std::generate(t.begin(), t.end(), [&] { return any(exponents); });
        t[5] = 0;
        expectFormula({i % 2 ? any(4) : 0.0, i % 4 ? t[0] : 0.0, any(exponents), any(exponents)},
                      t);
    }
    const double infinity = INFINITY;
    for (const double run : {infinity, -infinity, 1.0, 1e-310, 1e300})
        for (const double rise : {infinity, 0.0, -0.0, 3e38, double(NAN)})
            expectFormula({-0.0, 0, rise, run}, {0, -0.0, 1, 3e38F});
}

TEST_P(Loops, LowCutIsTheFormulaAndTheSameOnAllMachines) {
    for (const std::size_t voices : {1, 3, 4, 6, 13, 21}) {
        std::mt19937 random(1);
        std::vector<vexa::LowCutFilter> is, should, best;
        std::vector<vexa::LowCutFilter*> filters, bestFilters;
        for (std::size_t k = 0; k < voices; k++) {
            const float decay = std::exp2(-0.001F * float(1 + k * k));
            is.push_back({decay, decay * decay, (1 - decay * decay) / decay, 3, -2, 0});
        }
        should = best = is;
        for (std::size_t k = 0; k < voices; k++) {
            filters.push_back(&is[k]);
            bestFilters.push_back(&best[k]);
        }
        for (int block = 0; block < 100; block++) {
            const std::size_t count = 1 + random() % kMostSamples;
            std::vector<float> input(voices * count + vexa::kSlack);
            for (float& s : input)
                s = random() % 100 == 0 ? INFINITY : float(random()) / 2147483648.0F - 1;
            std::array<float, kRoom> sum{}, bestSum{};
            GetParam()->LowCut(filters.data(), input.data(), voices, count, sum.data(), 1, 0);
            vexa::Loops().LowCut(bestFilters.data(), input.data(), voices, count, bestSum.data(), 1,
                                 0);
            for (std::size_t i = 0; i < count; i++) {
                double shouldSum = 0;
                for (std::size_t k = 0; k < voices; k++) {
                    vexa::LowCutFilter& f = should[k];
                    const float s = std::isfinite(input[k * count + i]) ? input[k * count + i] : 0;
                    const double w0 = double(f.hpa) * f.hpsum0 + s;
                    const double w1 = double(f.hpb) * f.hpsum1 + s;
                    f.hpsum0 = float(w0);
                    f.hpsum1 = float(w1);
                    f.out = float(s - f.hpgain * (w0 - w1));
                    shouldSum += f.out;
                }
                ASSERT_EQ(sum[i], bestSum[i]);
                ASSERT_NEAR(sum[i], shouldSum, 1e-7 * double(voices));
            }
            for (std::size_t k = 0; k < voices; k++)
                ASSERT_NEAR(is[k].out, should[k].out, 1e-7);
        }
    }
}

TEST_P(Loops, ALowCutWhoseSumsAreNotFiniteStartsAfresh) {
    std::vector<vexa::LowCutFilter> filters(6, {0.9F, 0.81F, 0.2F, 1, 1, 0});
    filters[1].hpsum0 = INFINITY;
    filters[5].hpsum1 = std::nanf("");
    std::vector<vexa::LowCutFilter*> pointers;
    for (vexa::LowCutFilter& filter : filters)
        pointers.push_back(&filter);
    std::vector<float> input(filters.size() * 16 + vexa::kSlack, 0.5F);
    std::array<float, kRoom> sum{};
    EXPECT_FALSE(
        GetParam()->LowCut(pointers.data(), input.data(), filters.size(), 16, sum.data(), 1, 0));
    for (std::size_t i = 0; i < 16; i++)
        EXPECT_LT(std::abs(sum[i]), 10) << i;
    input[3 * 16 + 7] = -1e31F;
    EXPECT_TRUE(
        GetParam()->LowCut(pointers.data(), input.data(), filters.size(), 16, sum.data(), 1, 0));
}

} // namespace
