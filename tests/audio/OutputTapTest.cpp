// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/OutputLevel.h"

#include <array>
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

namespace {

using vexa::OutputFrame;
using vexa::OutputLevel;
using vexa::OutputTap;

TEST(OutputTap, WhatIsReadIsWhatCameWhileMoreComes) {
    // Numbers that a float holds exactly.
    constexpr uint64 kNumbers = 1U << 24;
    OutputTap tap;
    std::vector<float> buffer(2 * 500);
    const auto put = [&](uint64 first, std::size_t count) {
        for (std::size_t i = 0; i < count; i++) {
            buffer[2 * i] = static_cast<float>((first + i) % kNumbers);
            buffer[2 * i + 1] = -buffer[2 * i];
        }
        tap.Put(buffer.data(), count, 2);
    };
    put(7, 100);
    const OutputTap::Listener listener(tap);
    EXPECT_EQ(listener.Count(), 0U) << "nothing is kept before anybody listens";
    // By turns all that is kept, the oldest of which is about to go, and the newest.
    std::vector<OutputFrame> all(OutputTap::kFrames - 600);
    // So many frames may have come. More do with each look, now and then too many while it lasts.
    std::atomic<uint64> due{OutputTap::kFrames};
    std::jthread media([&](const std::stop_token& stop) {
        uint64 count = 0;
        for (std::size_t block = 1; !stop.stop_requested(); block = block % 499 + 1) {
            put(count, block);
            count += block;
            while (count > due && !stop.stop_requested())
                std::this_thread::yield();
        }
    });
    int whole = 0, overtaken = 0;
    while (whole < 2000 || (overtaken == 0 && whole < 100000)) {
        const auto seen = whole % 2 == 0 ? std::span(all) : std::span(all).first(20);
        const uint64 end = listener.Count();
        if (end < all.size())
            continue;
        due += 500;
        if (!listener.Copy(end - seen.size(), seen)) {
            overtaken++;
            continue;
        }
        whole++;
        for (std::size_t i = 0; i < seen.size(); i++) {
            const auto number = static_cast<float>((end - seen.size() + i) % kNumbers);
            ASSERT_TRUE(seen[i].left == number && seen[i].right == -number)
                << seen[i].left << " for " << number;
        }
    }
    media = {};
    EXPECT_FALSE(listener.Copy(listener.Count() - 10, std::span(all).first(11)));
    EXPECT_FALSE(listener.Copy(0, std::span(all).first(10)));
}

TEST(OutputLevel, RisesAtOnceFallsSlowlyHoldsPeaksAndSeesClipping) {
    OutputTap tap;
    OutputLevel level(tap);
    const auto put = [&](float left, float right, std::size_t count = 1) {
        const std::array<float, 2> frame = {left, right};
        for (std::size_t i = 0; i < count; i++)
            tap.Put(frame.data(), 1, 2);
    };
    const auto expect = [&](double seconds, float left, float right, float held) {
        level.Look(seconds);
        EXPECT_NEAR(level.Level(0), left, 0.01);
        EXPECT_NEAR(level.Level(1), right, 0.01);
        EXPECT_NEAR(level.Held(0), held, 0.01);
        EXPECT_NEAR(level.Held(1), right < -59 ? -60 : level.Held(1), 0.01);
    };
    expect(0.1, -60, -60, -60);
    put(-0.5F, 0.001F);
    put(0.25F, 0);
    expect(0.1, -6.02F, -60, -6.02F);
    expect(0.85, -16.02F, -60, -6.02F);
    put(0.25F, 1);
    expect(0.1, -12.04F, 0, -6.02F);
    EXPECT_FALSE(level.Clipped()) << "full scale can be played";
    expect(1.1, -24.98F, -12.94F, -24.98F);
    const float mono = 1.001F;
    tap.Put(&mono, 1, 1);
    put(0, 0, 5000);
    expect(0.1, 0.01F, 0.01F, 0.01F);
    EXPECT_TRUE(level.Clipped());
    level.Look(10);
    EXPECT_TRUE(level.Clipped());
    level.Forgive();
    put(2, 2);
    put(0, 0, OutputTap::kFrames);
    expect(10, -60, -60, -60);
    EXPECT_FALSE(level.Clipped()) << "it is too long ago";
}

} // namespace
