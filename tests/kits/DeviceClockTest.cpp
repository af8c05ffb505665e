// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/DeviceClock.h"

#include <random>

#include <gtest/gtest.h>

namespace {

TEST(DeviceClock, FramesAndTimesBelongTogether) {
    const kits::DeviceClock clock(44100);
    EXPECT_EQ(clock.TimeOf(44100), 1000000);
    for (int64 frame = 0; frame < 40000000000; frame = frame * 3 + 1)
        EXPECT_EQ(clock.FrameAt(clock.TimeOf(frame)), frame);
}

TEST(DeviceClock, SmoothsTheJitterOfItsThread) {
    // The device runs 50 ppm faster than its nominal rate, and the thread wakes up to 2 ms late.
    kits::DeviceClock clock(48000);
    std::mt19937 random(3);
    const auto trueTime = [](int64 frame) { return 7e6 + double(frame) * 1e6 / 48002.4; };
    bigtime_t before = 0;
    for (int64 frame = 0; frame < 480 * 2000; frame += 480) {
        const double jitter = std::uniform_real_distribution<>(0, 2000)(random);
        clock.Period(frame, static_cast<bigtime_t>(trueTime(frame) + jitter));
        ASSERT_EQ(clock.Frame(), frame);
        const auto now = static_cast<bigtime_t>(trueTime(frame + 240));
        const bigtime_t told = clock.PerformanceTimeFor(now);
        EXPECT_GT(told, before);
        before = told;
        if (frame > 480 * 200) {
            EXPECT_NEAR(double(told), double(clock.TimeOf(frame + 240)) - 1000, 600);
        }
        EXPECT_NEAR(double(clock.RealTimeFor(told)), double(now), 2) << "the way back";
    }
}

TEST(DeviceClock, StandsStillWithoutPeriods) {
    kits::DeviceClock clock(48000);
    clock.Period(0, 1000000);
    EXPECT_TRUE(clock.IsRunning(1000000));
    EXPECT_TRUE(clock.IsRunning(1400000)) << "the longest period of a server";
    EXPECT_FALSE(clock.IsRunning(6000000));
    clock.Period(480, 6000000);
    EXPECT_TRUE(clock.IsRunning(6010000));
}

TEST(DeviceClock, FollowsAJumpAtOnce) {
    kits::DeviceClock clock(48000);
    clock.Period(0, 1000000);
    clock.Period(480, 1010000);
    EXPECT_EQ(clock.PerformanceTimeFor(1010000), 10000);
    clock.Period(960, 1520000); // it paused for half a second
    EXPECT_EQ(clock.PerformanceTimeFor(1525000), 25000);
    EXPECT_EQ(clock.RealTimeFor(25000), 1525000);
}

/// For events that arrive with one period and are asked about in a later one.
TEST(DeviceClock, TellsAPastMomentFromItsOwnPeriod) {
    kits::DeviceClock clock(48000, 1);
    // Each period arrives 300 us later than its length allows, and then the device stands still.
    for (int64 period = 0; period < 4; period++)
        clock.Period(period * 480, 1000000 + period * 10300);
    clock.Period(4 * 480, 1000000 + 3 * 10300 + 400000);
    EXPECT_EQ(clock.PerformanceTimeFor(1000000 + 2 * 10300 + 7000), 27000);
    EXPECT_EQ(clock.PerformanceTimeFor(1000000 + 2 * 10300), 20000);
    EXPECT_EQ(clock.PerformanceTimeFor(1000000 + 3 * 10300 + 200000), 40000) << "it stood still";
    EXPECT_LT(clock.PerformanceTimeFor(900000), 0) << "before the first";
}

TEST(DeviceClock, FollowsSteadyMomentsAtOnce) {
    kits::DeviceClock clock(48000, 1);
    clock.Period(0, 1000000);
    clock.Period(480, 1010000);
    // A period was lost: the device continues 10 ms later than expected.
    clock.Period(960, 1030000);
    EXPECT_EQ(clock.PerformanceTimeFor(1030000), 20000);
    EXPECT_EQ(clock.RealTimeFor(20000), 1030000);
}

} // namespace
