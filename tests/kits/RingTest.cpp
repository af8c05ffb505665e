// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Ring.h"

#include "kits/support/TraceLater.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <string>
#include <thread>

#include <gtest/gtest.h>

namespace {

TEST(Ring, WritesAllOrNothingAcrossItsEnd) {
    kits::Ring<int> ring(5); // rounded up
    ASSERT_EQ(ring.Writable(), 8U);
    std::array<int, 9> items{};
    std::iota(items.begin(), items.end(), 0);
    EXPECT_FALSE(ring.Write(items.data(), 9));
    EXPECT_EQ(ring.Readable(), 0U);
    EXPECT_TRUE(ring.Write(items.data(), 6));
    EXPECT_FALSE(ring.Write(items.data(), 3));
    EXPECT_EQ(ring.Skip(4), 4U);
    EXPECT_TRUE(ring.Write(items.data(), 6)) << "two to the end, four from the beginning";
    EXPECT_EQ(ring.Writable(), 0U);

    std::array<int, 9> read{};
    EXPECT_EQ(ring.Read(read.data(), 9), 8U);
    EXPECT_EQ(read, (std::array<int, 9>{4, 5, 0, 1, 2, 3, 4, 5, 0}));
    EXPECT_EQ(ring.Skip(1), 0U);
}

TEST(Ring, OneWriterAndOneReaderKeepTheOrder) {
    constexpr std::uint32_t kItems = 300000;
    kits::Ring<std::uint32_t> ring(64);
    std::thread writer([&ring] {
        std::mt19937 random(1);
        std::array<std::uint32_t, 70> items{};
        for (std::uint32_t next = 0; next < kItems;) {
            const std::uint32_t count = std::min<std::uint32_t>(random() % 70, kItems - next);
            std::iota(items.begin(), items.begin() + count, next);
            if (ring.Write(items.data(), count)) // more than the ring holds is refused
                next += count;
            else
                std::this_thread::yield();
        }
    });
    std::mt19937 random(2);
    std::array<std::uint32_t, 100> items{};
    std::uint32_t expected = 0;
    std::uint32_t faults = 0;
    while (expected < kItems) {
        const std::size_t count = ring.Read(items.data(), random() % items.size());
        for (std::size_t i = 0; i < count; i++)
            faults += items[i] != expected++;
        if (count == 0)
            std::this_thread::yield();
    }
    writer.join();
    EXPECT_EQ(faults, 0U);
    EXPECT_EQ(ring.Readable(), 0U);
}

TEST(Ring, PartsComeTogether) {
    kits::Ring<char> ring(1000);
    std::jthread writer([&ring](const std::stop_token& stop) {
        const std::string head = "head";
        const std::string body = "body";
        while (!stop.stop_requested())
            ring.Write({head, body});
    });
    std::array<char, 8> piece{};
    int pieces = 0;
    for (int look = 0; look < 1000000 || pieces < 1000; look++) {
        ASSERT_EQ(ring.Readable() % 8, 0U);
        if (ring.Read(piece.data(), 8) == 0)
            continue;
        pieces++;
        ASSERT_EQ(std::string(piece.data(), 8), "headbody");
    }
}

TEST(TraceLater, TellsWhatWasPutDownAndHowMuchFoundNoRoom) {
    // In a process of its own, which has not looked at the variable yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ::setenv("VEXA_TRACE", "1", 1);
            kits::TraceLater trace;
            for (int i = 0; i < 300; i++)
                trace.Put("late by %lld\n", i);
            std::fprintf(stderr, "nothing yet\n");
            trace.Tell();
            std::exit(0);
        },
        testing::ExitedWithCode(0),
        "^nothing yet\nlate by 0\nlate by 1\n(.|\n)*late by 255\n44 trace lines are lost");
}

} // namespace
