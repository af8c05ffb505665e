// What the system refuses, one thing after the other: the program plays all the same, or ends with
// a message and code 1, and files are whole or as they were.
#include "support/Command.h"
#include "support/TemporaryFolder.h"

#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::CommandResult;
using testing::HasSubstr;

const std::string kProgram = VEXA_PROGRAM_FOLDER "/vexa-render";

class RenderFaults : public testing::Test {
  protected:
    void SetUp() override {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "a sanitizer needs more than these limits leave";
#endif
    }

    /// Renders over an older file while the process may use so much of a resource, as the shell's
    /// ulimit takes it, and expects one of the two good ends. True if it played.
    bool RunWith(const std::string& limit) {
        const fs::path old = folder.Write("out.wav", "precious");
        const CommandResult result =
            test::RunCommand({"/bin/sh", "-c", "ulimit " + limit + " && exec \"$0\" \"$@\"",
                              kProgram, Note(), old.string(), "--quiet", "--tail", "0"});
        const std::string bytes = test::Contents(old);
        if (result.exitCode == 0) {
            EXPECT_TRUE(bytes.starts_with("RIFF")) << limit;
        } else {
            EXPECT_EQ(result.exitCode, 1) << limit << "\n" << result.text;
            EXPECT_THAT(result.text, HasSubstr("vexa-render: ")) << limit;
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
    int played = 0;
    int refused = 0;
    // With fewer the loader itself finds no room for the libraries.
    for (int most = 5; most <= 24; most++)
        (RunWith("-n " + std::to_string(most)) ? played : refused)++;
    EXPECT_GT(played, 0);
    EXPECT_GT(refused, 0) << "nothing has been injected";
}

TEST_F(RenderFaults, MemoryUsedUp) {
    // From what the loader needs for the libraries on.
    int least = 8 << 10;
    while (least < (1 << 20) &&
           test::RunCommand({"/bin/sh", "-c",
                             "ulimit -v " + std::to_string(least) + " && exec \"$0\" --version",
                             kProgram})
                   .exitCode != 0)
        least += 1 << 10;
    int played = 0;
    int refused = 0;
    for (int kilobytes = least; kilobytes < least + (60 << 10); kilobytes += 1 << 10)
        (RunWith("-v " + std::to_string(kilobytes)) ? played : refused)++;
    EXPECT_GT(played, 0);
    EXPECT_GT(refused, 0) << "nothing has been injected";
}

TEST_F(RenderFaults, ADiskThatIsFullAtAnyPoint) {
    int refused = 0;
    // In blocks of 512 bytes; the file and the add-on both run into the limit.
    for (int blocks = 0; blocks <= 160; blocks += 8)
        refused += RunWith("-f " + std::to_string(blocks)) ? 0 : 1;
    EXPECT_GT(refused, 10);
}

} // namespace
