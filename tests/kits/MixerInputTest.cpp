// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MixerInput.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <numeric>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Frames = std::vector<float>;
constexpr double kTurn = 2 * std::numbers::pi;

class MixerInput : public testing::Test {
  protected:
    /// Writes `count` frames 1, 2, 3... that begin at the device's frame `frame`.
    bigtime_t Put(int64 frame, std::size_t count) {
        Frames frames(count);
        std::iota(frames.begin(), frames.end(), 1.0F);
        return input.Write(frames, clock.TimeOf(frame));
    }
    Frames Period(int64 frame, std::size_t count) {
        Frames mix(count, 0);
        input.AddTo(mix, nullptr, frame);
        return mix;
    }
    int64 Late() const { return input.Counts().late; }
    int64 Missing() const { return input.Counts().missing; }

    kits::DeviceClock clock{48000};
    kits::MixerInput input{clock, 48000, 256};
};

TEST_F(MixerInput, PlaysFramesExactlyAtTheirPlace) {
    EXPECT_EQ(Put(1003, 4), 0);
    EXPECT_EQ(Put(1007, 2), 0);
    EXPECT_EQ(Period(1000, 5), (Frames{0, 0, 0, 1, 2})) << "the stream begins";
    Frames mix(4, 10.0F);
    input.AddTo(mix, nullptr, 1005);
    EXPECT_EQ(mix, (Frames{13, 14, 11, 12})) << "added to what others play";
    EXPECT_EQ(Late() + Missing(), 0);
}

/// Each of two channels must equal the same channel alone, at the device's rate and at another.
TEST(MixerInputOfTwoChannels, KeepsThemApart) {
    const kits::DeviceClock clock(48000);
    for (const double rate : {48000.0, 44100.0}) {
        kits::MixerInput one(clock, rate, 256);
        kits::MixerInput two(clock, rate, 256, 2);
        Frames alone(2000, 0);
        Frames left(2000, 0);
        Frames right(2000, 0);
        for (int buffer = 0; buffer < 8; buffer++) {
            Frames mono;
            Frames stereo;
            for (int i = 0; i < 256; i++) {
                mono.push_back(float(std::sin(0.1 * (buffer * 256 + i))));
                stereo.insert(stereo.end(), {mono.back(), -0.5F * mono.back()});
            }
            const auto start = bigtime_t(buffer * 256 * 1e6 / rate) + 10000;
            one.Write(mono, start);
            two.Write(stereo, start);
        }
        // Reads in parts, from the middle of the stream.
        for (const std::size_t from : {1100, 1500}) {
            one.AddTo(std::span(alone).subspan(from, 400), nullptr, int64(from));
            two.AddTo(std::span(left).subspan(from, 400), &right[from], int64(from));
        }
        EXPECT_EQ(left, alone);
        for (std::size_t i = 0; i < right.size(); i++)
            ASSERT_NEAR(right[i], -0.5F * alone[i], 1e-6) << rate;
        EXPECT_GT(*std::ranges::max_element(alone), 0.9F);
    }
}

TEST_F(MixerInput, StartTimesInWholeMicrosecondsAreNoGaps) {
    // 256 frames are 5333.3 us.
    std::size_t played = 0;
    for (int64 frame = 0; frame < 256 * 400; frame += 256) {
        Put(frame, 256);
        for (const float sample : Period(frame, 256))
            ASSERT_EQ(sample, float(played++ % 256 + 1));
    }
    EXPECT_EQ(Late() + Missing(), 0);
}

TEST_F(MixerInput, LateFramesAreCountedAndSkipped) {
    Period(0, 100);
    EXPECT_EQ(Put(95, 3), clock.TimeOf(100) - clock.TimeOf(95));
    EXPECT_EQ(Put(98, 4), 0) << "less late than the one before";
    EXPECT_EQ(Put(102, 2), 0);
    EXPECT_EQ(Period(100, 6), (Frames{3, 4, 1, 2, 0, 0}));
    EXPECT_EQ(Late(), 2) << "one wholly, one in part";
    Put(104, 1);
    EXPECT_EQ(Put(102, 1),
              clock.TimeOf(106) - clock.TimeOf(102) - (clock.TimeOf(106) - clock.TimeOf(104)));
}

TEST_F(MixerInput, AGapIsMeantAndAnEmptyRingIsNot) {
    Put(0, 4);
    Put(12, 2);
    EXPECT_EQ(Period(0, 10), (Frames{1, 2, 3, 4, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(Missing(), 0) << "something comes later";
    EXPECT_EQ(Period(10, 5), (Frames{0, 0, 1, 2, 0}));
    EXPECT_EQ(Missing(), 1) << "a frame too few";
    Period(15, 5);
    EXPECT_EQ(Missing(), 2);
    input.Stopped();
    Period(20, 5);
    EXPECT_EQ(Missing(), 2);
}

TEST_F(MixerInput, AStreamThatGoesBackStaysInsideOfThePeriod) {
    Put(1000, 100);
    Put(500, 200); // long past when the period at 1000 begins
    Put(1050, 60); // its first half has been played
    Frames mix(1000, 0);
    input.AddTo(std::span(mix).subspan(600, 200), nullptr, 1000);
    Frames expected(1000, 0);
    std::iota(expected.begin() + 600, expected.begin() + 700, 1.0F);
    std::iota(expected.begin() + 700, expected.begin() + 710, 51.0F);
    EXPECT_EQ(mix, expected);
    EXPECT_EQ(Late(), 2);
}

TEST_F(MixerInput, WhatComesLateAtAnyMomentStaysInsideOfThePeriod) {
    constexpr std::size_t kLate = 9600;
    std::atomic<int64> played{0};
    std::jthread producer([&](const std::stop_token& stop) {
        const Frames frames(64, 1.0F);
        for (int64 frame = 0; !stop.stop_requested();) {
            // Before the playing position nothing would be late any more.
            if (frame < played - int64(kLate) || frame > played)
                frame = played - int64(kLate);
            input.Write(frames, clock.TimeOf(frame));
            frame += 64;
        }
    });
    // Room for frames that would be written too early.
    Frames all(kLate + 128 + 64, 0);
    const std::span mix = std::span(all).subspan(kLate + 64);
    while (Late() < 20000) {
        input.AddTo(mix.first(64), nullptr, played);
        played += 64;
    }
    producer.request_stop();
    producer.join();
    EXPECT_EQ(std::accumulate(all.begin(), all.begin() + kLate + 64, 0.0F), 0)
        << "before the period";
    EXPECT_EQ(std::accumulate(all.end() - 64, all.end(), 0.0F), 0) << "behind it";
}

TEST_F(MixerInput, WhatIsNotFiniteBecomesSilence) {
    constexpr float kInf = std::numeric_limits<float>::infinity();
    input.Write(Frames{0.5F, std::nanf(""), kInf, -kInf, 0.25F}, 0);
    EXPECT_EQ(Period(0, 5), (Frames{0.5F, 0, 0, 0, 0.25F}));
}

TEST_F(MixerInput, AFullRingLosesBuffersButNotThePlace) {
    for (int64 frame = 0; frame < 256 * 300; frame += 256)
        Put(frame, 256);
    EXPECT_EQ(Period(0, 65536).back(), 256);
    EXPECT_EQ(Period(65536, 256), Frames(256, 0));
    Put(256 * 300, 2);
    EXPECT_EQ(Period(256 * 300 - 1, 4), (Frames{0, 1, 2, 0}));
}

TEST(MixerInputConverts, NothingIsMissingBeforeTheFirstFrameIsThere) {
    const kits::DeviceClock clock(48000);
    kits::MixerInput input(clock, 44100, 16);
    Frames mix(480, 0);
    EXPECT_EQ(input.Write(Frames(16, 1.0F), 20000), 0); // shorter than the filter
    input.AddTo(mix, nullptr, 0);
    EXPECT_EQ(input.Counts().missing, 0);
}

/// After months of streaming the times have few digits below a microsecond.
TEST(MixerInputConverts, AStreamOfMonthsStaysInOnePiece) {
    constexpr double kRate = 44100;
    constexpr std::size_t kCount = 3;
    constexpr bigtime_t kBegin = bigtime_t{200} * 86400 * 1000000;
    const kits::DeviceClock clock(48000);
    kits::MixerInput input(clock, kRate, kCount);
    const Frames frames(kCount, 1.0F);
    Frames mix(480);
    int64 frame = clock.FrameAt(kBegin);
    float least = 2;
    for (int64 sent = 0; sent < 1000000; sent += kCount) {
        const bigtime_t start = kBegin + bigtime_t(double(sent) / kRate * 1e6);
        input.Write(frames, start);
        // The device is 20 ms behind.
        while (frame + 480 + 960 < clock.FrameAt(start)) {
            std::ranges::fill(mix, 0.0F);
            input.AddTo(mix, nullptr, frame);
            if (sent > 10000)
                least = std::min(least, std::ranges::min(mix));
            frame += 480;
        }
    }
    EXPECT_NEAR(least, 1, 0.01) << "the filter begins anew, or frames are missing";
    EXPECT_EQ(input.Counts().late + input.Counts().missing, 0);
}

/// A producer on the test's clock, how long it is slow and how slow it is.
struct Fault {
    /// In microseconds.
    double duration;
    /// The time that rendering takes, relative to the duration rendered.
    double cost;
    bigtime_t leastLatency;
    bigtime_t mostLatency;
};
class MixerInputAfter : public testing::TestWithParam<Fault> {};
/// Many buffers that take twice their duration, and one that takes three seconds.
INSTANTIATE_TEST_SUITE_P(, MixerInputAfter,
                         testing::Values(Fault{300000, 2, 100000, 200000},
                                         Fault{1500, 2067, 500000, 700000}));

TEST_P(MixerInputAfter, TheLatencyThatAFaultHasAddedIsGivenBackWithoutAClick) {
    const Fault fault = GetParam();
    constexpr double kBegin = 1e6;
    constexpr double kRate = 44100;
    constexpr double kBuffer = 64 * 1e6 / kRate;
    constexpr std::size_t kPeriod = 128;
    const kits::DeviceClock clock(48000);
    kits::MixerInput input(clock, kRate, 64);
    const bigtime_t needed = 2667 + input.Lookahead() + kits::MixerInput::kMargin + 1536;
    bigtime_t latency = needed;
    bigtime_t most = 0;
    double free = 0; // the time from which the producer can begin the next buffer
    double end = kBegin + fault.duration;
    int64 sent = 0;
    int64 missing = 0;
    Frames played;
    const auto now = [&] { return double(played.size()) * 1e6 / 48000; };
    while (now() < end + 8e6) {
        const double start = double(sent) * 1e6 / kRate;
        const double begin = std::max(start - double(latency), free);
        const bool slow = begin > kBegin && begin < kBegin + fault.duration;
        free = begin + kBuffer * (slow ? fault.cost : 0.3);
        if (slow)
            end = free;
        while (now() <= free) {
            Frames mix(kPeriod, 0);
            input.AddTo(mix, nullptr, int64(played.size()));
            played.insert(played.end(), mix.begin(), mix.end());
        }
        Frames frames(64);
        for (float& frame : frames)
            frame = static_cast<float>(std::sin(kTurn * 440 * double(sent++) / kRate));
        const bigtime_t change = input.Write(frames, static_cast<bigtime_t>(start));
        // Applies the change as the tone producer does.
        latency = std::max(latency + change, needed);
        most = std::max(most, latency - needed);
        if (now() < end + 2e6)
            missing = input.Counts().missing;
        if (now() > end + 5e6) {
            ASSERT_EQ(latency, needed);
        }
    }
    EXPECT_GT(most, fault.leastLatency);
    EXPECT_LT(most, fault.mostLatency);
    EXPECT_EQ(input.Counts().missing, missing);
    float step = 0;
    for (auto i = std::size_t((end + 2e6) * 0.048); i < played.size(); i++)
        step = std::max(step, std::abs(played[i] - played[i - 1]));
    EXPECT_NEAR(step, kTurn * 440 / 48000, 0.001);
}

/// Returns the sine of a frequency in the frames, relative to sin(2 pi f t) with t = 0 at frame 0.
std::complex<double> SineIn(std::span<const float> frames, std::size_t from, double frequency,
                            double rate) {
    std::complex<double> sum = 0;
    double weights = 0;
    for (std::size_t i = from; i < frames.size(); i++) {
        const double window = 1 - std::cos(kTurn * double(i - from) / double(frames.size() - from));
        sum += window * double(frames[i]) * std::polar(1.0, -kTurn * frequency * double(i) / rate);
        weights += window;
    }
    return std::complex<double>(0, 2) * sum / weights;
}

/// The rate of the producer: one with a simple ratio to the device's, one without.
class MixerInputConvertsFrom : public testing::TestWithParam<double> {};
INSTANTIATE_TEST_SUITE_P(, MixerInputConvertsFrom, testing::Values(44100.0, 44101.5));

TEST_P(MixerInputConvertsFrom, ASineKeepsItsFrequencyLevelAndPlace) {
    const double rate = GetParam();
    const kits::DeviceClock clock(48000);
    for (const double frequency : {100.0, 1000.0, 15000.0}) {
        kits::MixerInput input(clock, rate, 256);
        EXPECT_GT(input.Lookahead(), 0);
        Frames frames(256);
        Frames played;
        int64 sent = 0;
        // A second, five buffers (29 ms) left out, and another second.
        const int64 gap = 256 * 172;
        for (int buffer = 0; buffer < 350; buffer++) {
            if (sent == gap)
                sent += 5 * 256;
            for (std::size_t i = 0; i < 256; i++)
                frames[i] = static_cast<float>(
                    0.5 * std::sin(kTurn * frequency * double(sent + int64(i)) / rate));
            const double seconds = double(sent) / rate;
            EXPECT_EQ(input.Write(frames, static_cast<bigtime_t>(seconds * 1e6)), 0);
            sent += 256;
            // The device fetches all frames that must be available by now.
            const auto end = static_cast<int64>((seconds + 256 / rate) * 48000) -
                             static_cast<int64>(double(input.Lookahead()) * 0.048) - 2;
            while (int64(played.size()) + 64 <= end) {
                Frames mix(64, 0);
                input.AddTo(mix, nullptr, static_cast<int64>(played.size()));
                played.insert(played.end(), mix.begin(), mix.end());
            }
        }
        EXPECT_EQ(input.Counts().late, 0);
        EXPECT_EQ(input.Counts().missing, 0) << frequency;
        const std::span all(played);
        const auto afterGap = static_cast<std::size_t>(double(gap + 5 * 256) / rate * 48000);
        for (const auto& part : {all.first(47000), all}) {
            const std::size_t from = part.size() == 47000 ? 0 : afterGap;
            const auto sine = SineIn(part, from + 200, frequency, 48000);
            EXPECT_NEAR(20 * std::log10(std::abs(sine) / 0.5), 0, 0.1) << frequency;
            // Half a frame is due to rounding the start to a frame.
            const double frameError = std::arg(sine) / kTurn / frequency * 48000;
            EXPECT_LE(std::abs(frameError), 0.55) << frequency << " from " << from;
        }
    }
}

} // namespace
