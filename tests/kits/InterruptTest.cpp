// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/Interrupt.h"

#include <csignal>
#include <cstdio>
#include <thread>

#include <gtest/gtest.h>

namespace {

int earlier = 0;

void Earlier(int number) {
    earlier = number;
}

TEST(Interrupt, NotesASignalAndGivesTheHandlersBack) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(number, Earlier);
        earlier = 0;
        {
            const kits::Interrupt interrupt;
            EXPECT_FALSE(interrupt.Requested()) << "the signal of the round before is forgotten";
            std::raise(number);
            EXPECT_TRUE(interrupt.Requested());
            EXPECT_EQ(interrupt.Signal(), number);
            EXPECT_EQ(interrupt.ExitCode(), 128 + number);
            EXPECT_EQ(earlier, 0);
        }
        std::raise(number);
        EXPECT_EQ(earlier, number);
        std::signal(number, SIG_DFL);
    }
}

TEST(Interrupt, EndsAProgramThatDoesNotStopUnlessItCompletesSomething) {
    const auto hang = [] {
        // It may be ignored, as under nohup.
        std::signal(SIGHUP, SIG_DFL);
        const kits::Interrupt interrupt;
        std::raise(SIGINT);
        std::raise(SIGTERM);
        std::this_thread::sleep_for(kits::Interrupt::kPatience);
        {
            const kits::Interrupt::Completion completing;
            std::raise(SIGTERM);
        }
        std::fputs("completed", stderr);
        std::raise(SIGHUP);
    };
    EXPECT_EXIT(hang(), testing::KilledBySignal(SIGHUP), "completed");
}

TEST(Interrupt, LeavesAnIgnoredSignalIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        const kits::Interrupt interrupt;
        std::raise(SIGHUP);
        EXPECT_FALSE(interrupt.Requested());
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

} // namespace
