// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/GuardedMain.h"

#include <csignal>
#include <thread>

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

namespace {

TEST(GuardedMain, NoProgramEndsWithoutAWord) {
    const auto unknown = [] {
        std::thread([] { throw 1; }).join();
        return 0;
    };
    const auto cancelled = [] {
        std::thread thread([]() noexcept { ::pause(); });
        ::pthread_cancel(thread.native_handle());
        thread.join();
        return 0;
    };
    const testing::KilledBySignal aborted(SIGABRT);
    EXPECT_EXIT(kits::GuardedMain("p", unknown), aborted, "p: ended by a fault");
    EXPECT_EXIT(kits::GuardedMain("p", cancelled), aborted, "p: ended by a fault");
}

} // namespace
