// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/backends/JackClient.h"

#include "kits/kernel/ChildProcess.h"
#include "support/Limits.h"

#include <csignal>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

TEST(JackClient, IsNotOpenedWhereTheLibraryHadTooLittleForIt) {
    // As long as there is memory it fails because there is no server.
    ::setenv("JACK_DEFAULT_SERVER", "vexa-no-such-server", 1);
    test::WithDescriptorsLeft(test::kNeedsDescriptors ? 20 : 10, [] {
        const auto client = kits::JackClient::Open();
        ASSERT_FALSE(client);
        EXPECT_THAT(client.Fault().text, testing::HasSubstr("not enough room for open files"));
    });
    const auto client = kits::JackClient::Open();
    ASSERT_FALSE(client);
    EXPECT_EQ(client.Fault().text, "no JACK server is running");
}

} // namespace
