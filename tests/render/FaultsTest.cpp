// SPDX-License-Identifier: GPL-3.0-or-later
// Denies one system resource after the other. Catches a program that neither plays nor ends with a
// message and code 1, and files that are partly written.
#include "render/RenderProgram.h"
#include "support/Limits.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::CommandResult;
using test::kProgram;

class RenderFaults : public testing::Test {
  protected:
    void SetUp() override {
        if (test::kSanitized)
            GTEST_SKIP() << "a sanitizer needs more than these limits leave";
    }

    /// Renders over an older file at each step of a limit, and expects one of the two valid
    /// outcomes each time, and each of them at least once.
    void Walk(const char* option, int from, int to, int step) {
        int played = 0;
        int refused = 0;
        for (int limit = from; limit <= to; limit += step)
            (Plays(option + std::to_string(limit)) ? played : refused)++;
        EXPECT_GT(played, 0);
        EXPECT_GT(refused, 0) << "nothing has been injected";
    }

    bool Plays(const std::string& limit) {
        const fs::path old = folder.Write("out.wav", "precious");
        const CommandResult result =
            test::RunLimited(limit, {kProgram, Note(), old.string(), "--quiet", "--tail", "0",
                                     "--compile", "--function", "x*y/(1+x*x)"});
        const std::string bytes = test::Contents(old);
        if (result.exitCode == 0) {
            EXPECT_TRUE(bytes.starts_with("RIFF")) << limit;
        } else {
            EXPECT_EQ(result.exitCode, 1) << limit << "\n" << result.text;
            EXPECT_THAT(result.text, testing::HasSubstr("vexa-render: ")) << limit;
            EXPECT_EQ(bytes, "precious") << limit;
        }
        EXPECT_EQ(folder.Count(), 2U) << limit << ": something was left behind";
        return result.exitCode == 0;
    }

    std::string Note() const {
        return folder
            .Write("note.mid", {"MThd\0\0\0\6\0\0\0\1\1\xE0MTrk\0\0\0\15\0\x90\x45\x64\x81\x70\x80"
                                "\x45\0\0\xFF\x2F\0",
                                35})
            .string();
    }

    test::TemporaryFolder folder;
};

TEST_F(RenderFaults, FileDescriptorsUsedUp) {
    // With fewer descriptors the loader itself cannot load the libraries.
    Walk("-n ", 5, 24, 1);
}

TEST_F(RenderFaults, MemoryUsedUp) {
    const int least = test::LoaderMemory(kProgram);
    Walk("-v ", least, least + (60 << 10), 1 << 10);
}

TEST_F(RenderFaults, ADiskThatIsFullAtAnyPoint) {
    // In blocks of 512 bytes; the output and the add-on both reach the limit.
    Walk("-f ", 0, 400, 16);
}

} // namespace
