// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/BufferGroup.h"

#include <thread>

#include <gtest/gtest.h>

namespace {

constexpr bigtime_t kLong = 60000000;

TEST(BufferGroup, GivesEachBufferToOneUntilItComesBack) {
    BBufferGroup group(256, 3);
    BBuffer* const first = group.RequestBuffer(256, 0);
    BBuffer* const second = group.RequestBuffer(4, 0);
    BBuffer* const third = group.RequestBuffer(256, 0);
    ASSERT_TRUE(first && second && third);
    EXPECT_TRUE(first != second && second != third && third != first);
    EXPECT_EQ(group.RequestBuffer(256, 1000), nullptr);
    second->Recycle();
    EXPECT_EQ(group.RequestBuffer(256, 0), second);
    EXPECT_EQ(group.RequestBuffer(256, 0), nullptr) << "one came back, and once";
    first->Recycle();
    EXPECT_EQ(group.RequestBuffer(257, kLong), nullptr) << "nothing to wait for";
}

TEST(BufferGroup, ThreadsNeverShareABuffer) {
    BBufferGroup group(sizeof(int), 2);
    std::atomic<int> faults = 0;
    std::vector<std::thread> threads;
    for (int id = 1; id <= 4; id++) {
        threads.emplace_back([&group, &faults, id] {
            for (int i = 0; i < 20000; i++) {
                BBuffer* buffer = group.RequestBuffer(sizeof(int), kLong);
                if (!buffer) {
                    faults++;
                    continue;
                }
                auto* data = static_cast<volatile int*>(buffer->Data());
                *data = id;
                faults += *data != id;
                buffer->Recycle();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(faults, 0);
}

} // namespace
