// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Published.h"

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;

/// Counts its living instances.
struct Counted {
    explicit Counted(int number, std::atomic<int>& alive) : number(number), alive(&alive) {
        alive++;
    }
    Counted(Counted&& other) noexcept : number(other.number), alive(other.alive) { (*alive)++; }
    ~Counted() {
        number = -1;
        (*alive)--;
    }
    int number;
    std::atomic<int>* alive;
};

TEST(Published, FreesWhatNobodyReadsAndKeepsWhatSomebodyDoes) {
    std::atomic<int> alive = 0;
    kits::Published<Counted> value(Counted(1, alive));
    value.Publish(Counted(2, alive));
    EXPECT_EQ(alive, 1) << "no reader held the first value";

    kits::Reader reader;
    {
        const kits::Reader::Section section(reader);
        const Counted& held = value.Get();
        value.Publish(Counted(3, alive));
        EXPECT_FALSE(kits::WaitForReaders(1ms));
        EXPECT_EQ(held.number, 2) << "freed under its reader";
        EXPECT_EQ(alive, 2);
    }
    EXPECT_TRUE(kits::WaitForReaders(1s));
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(value.Get().number, 3);
}

TEST(Published, AReaderThatBeganAfterwardsDoesNotKeepTheOldValue) {
    std::atomic<int> alive = 0;
    kits::Published<Counted> value(Counted(1, alive));
    kits::Reader early;
    kits::Reader late;
    auto section = std::make_unique<kits::Reader::Section>(early);
    value.Publish(Counted(2, alive));
    const kits::Reader::Section after(late);
    section.reset();
    EXPECT_EQ(kits::CollectRetired(), 0U);
    EXPECT_EQ(alive, 1);
}

TEST(Published, ReadersOnOtherThreadsNeverSeeAFreedValue) {
    std::atomic<int> alive = 0;
    std::atomic<bool> stop = false;
    std::atomic<int> faults = 0;
    kits::Published<Counted> value(Counted(0, alive));
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; i++) {
        threads.emplace_back([&] {
            kits::Reader reader;
            int last = 0;
            while (!stop) {
                const kits::Reader::Section section(reader);
                const Counted& seen = value.Get();
                const int first = seen.number;
                for (int k = 0; k < 20; k++) {
                    if (seen.number != first || first < last)
                        faults++;
                }
                last = first;
            }
        });
    }
    for (int i = 1; i <= 20000; i++)
        value.Publish(Counted(i, alive));
    stop = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(kits::CollectRetired(), 0U);
    EXPECT_EQ(alive, 1);
}

} // namespace
