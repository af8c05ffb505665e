// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Envelope.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

using vexa::Envelope;
using vexa::EnvelopeCurve;
using vexa::EnvPoint;

EnvPoint Down(float t, float val) {
    return {t, false, val};
}
EnvPoint Up(float t, float val) {
    return {t, true, val};
}

TEST(Envelope, StartsWithOnePointInItsRange) {
    const Envelope around(-1, 1, 10);
    EXPECT_EQ(around.Points(), std::vector{Down(0, 0)});
    EXPECT_FLOAT_EQ(around.Split(), 6.6666665F);
    for (const float t : {0.0F, 1.0F, 1e9F}) {
        EXPECT_EQ(around.Value(t, false, 0.5F), 0);
        EXPECT_EQ(around.Value(t, true, 0.5F), 0);
    }
    const Envelope above(0.5F, 1, 10);
    EXPECT_EQ(above.Value(3, true, 0), 0.5F);
}

TEST(Envelope, IsHeardOnlyWhenPublished) {
    Envelope envelope(0, 1, 10);
    envelope.Points() = {Down(0, 1)};
    EXPECT_EQ(envelope.Value(0, false, 0), 0);
    envelope.ProduceCalcPts();
    EXPECT_EQ(envelope.Value(0, false, 0), 1);
    envelope.Points().clear();
    envelope.ProduceCalcPts();
    EXPECT_EQ(envelope.Value(0, false, 0), 0) << "without points as a new envelope";
}

TEST(EnvelopeCurve, FollowsTheKeyHoldsAndReleases) {
    const EnvelopeCurve curve({Down(0, 0), Down(1, 1), Down(2, 0.5F), Up(0.5F, 0)}, 0);
    EXPECT_FLOAT_EQ(curve.Value(0.5F, false, 0), 0.5F);
    EXPECT_FLOAT_EQ(curve.Value(1.5F, false, 0), 0.75F);
    EXPECT_FLOAT_EQ(curve.Value(5, false, 0), 0.5F);
    EXPECT_FLOAT_EQ(curve.Value(0.25F, true, 0.8F), 0.4F);
    EXPECT_FLOAT_EQ(curve.Value(0, true, 0.8F), 0.8F);
    EXPECT_FLOAT_EQ(curve.Value(2, true, 0.8F), 0);
}

TEST(EnvelopeCurve, ReleaseHasSegmentsOfItsOwnAndHoldsItsLastValue) {
    const EnvelopeCurve curve({Down(0, 1), Up(1, 0.4F), Up(2, 0.2F)}, 0);
    EXPECT_FLOAT_EQ(curve.Value(1.5F, true, 1), 0.3F);
    EXPECT_FLOAT_EQ(curve.Value(9, true, 1), 0.2F);
    EXPECT_FLOAT_EQ(curve.Value(9, false, 1), 1);

    const EnvelopeCurve jump({Down(0, 1), Up(0, 0.4F), Up(2, 0)}, 0);
    EXPECT_FLOAT_EQ(jump.Value(0, true, 1), 0.4F);
}

TEST(EnvelopeCurve, WithoutReleasePointsKeepsTheLevelOfNoteOff) {
    const EnvelopeCurve curve({Down(0, 0), Down(1, 1)}, 0);
    EXPECT_FLOAT_EQ(curve.Value(3, false, 0), 1);
    EXPECT_FLOAT_EQ(curve.Value(3, true, 0.7F), 0.7F);
}

TEST(EnvelopeCurve, AStepTakesTheLowerSegmentAtItsTime) {
    const EnvelopeCurve curve({Down(0, 0), Down(1, 0.2F), Down(1, 0.9F), Down(2, 0)}, 0);
    EXPECT_FLOAT_EQ(curve.Value(1, false, 0), 0.2F);
    EXPECT_NEAR(curve.Value(std::nextafter(1.0F, 2.0F), false, 0), 0.9F, 1e-5);
}

TEST(EnvelopeCurve, AnyListOfPointsHasAValue) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const EnvelopeCurve disorder({Up(2, 1), Down(5, 0.5F), Up(1, 0.25F), Down(0, 0)}, 0);
    const EnvelopeCurve broken({Down(nan, 1), Down(nan, 0.5F), Up(nan, nan)}, 0);
    for (const float t : {0.0F, 0.5F, 3.0F, 7.0F, nan}) {
        for (const bool released : {false, true}) {
            const float value = disorder.Value(t, released, 0.1F);
            EXPECT_TRUE(std::isnan(t) || (value >= 0 && value <= 1)) << t << ' ' << released;
            broken.Value(t, released, 0.1F);
        }
    }
}

TEST(EnvelopeCurve, ABlockHasTheValuesOfItsMoments) {
    const std::vector<std::vector<vexa::EnvPoint>> lists{
        {{0, false, 0}, {1, false, 0.2F}, {1, false, 0.9F}, {2, false, 0}},
        {{0, false, 0.3F}, {0.5F, true, 1}, {0.5F, true, 0.7F}, {1.5F, true, 0}},
        {{0, false, 0.1F}, {0.7F, false, 1}, {0, true, 0.4F}, {1, true, 0.4F}},
        {{0, true, 1}, {1, true, 2}},
        {{0, false, 0}, {2, false, 1}, {1, false, 3}, {1, true, 0}},
        {{0.5F, false, 1}, {1, false, 2}}};
    std::vector<double> t;
    for (int i = 0; i <= 300; i++)
        t.push_back(float(i) * 0.01F);
    t[100] = 1;
    for (const auto& points : lists) {
        const vexa::EnvelopeCurve curve(points, 0);
        for (const bool released : {false, true}) {
            for (std::size_t n = 1; n <= t.size(); n += 7) {
                std::vector<float> values(n);
                curve.Values(&t[t.size() - n], released, 0.6F, values.data(), n);
                for (std::size_t i = 0; i < n; i++)
                    ASSERT_EQ(values[i], curve.Value(float(t[t.size() - n + i]), released, 0.6F))
                        << i;
            }
        }
    }
}

} // namespace
