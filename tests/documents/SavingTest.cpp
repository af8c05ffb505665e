// SPDX-License-Identifier: GPL-3.0-or-later
// Catches documents that are lost or mixed when several programs save at the same time.
#include "documents/SoundDocument.h"
#include "support/Command.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;

vexa::Sound SoundOf(const std::string& author) {
    vexa::Sound sound;
    sound.author = author;
    return sound;
}

/// A reader sees one document or the other, complete.
TEST(Saving, TwoInstancesAtOnceNeverMixTheirDocuments) {
    const test::TemporaryFolder folder;
    const fs::path path = folder.Path() / "sound.xml";
    const vexa::Sound sounds[] = {SoundOf(std::string(100'000, 'a')), SoundOf("b")};
    ASSERT_TRUE(vexa::WriteSound(path, sounds[0]));
    std::vector<pid_t> children;
    for (const vexa::Sound& sound : sounds) {
        children.push_back(::fork());
        if (children.back() != 0)
            continue;
        for (int i = 0; i < 30; i++) {
            if (!vexa::WriteSound(path, sound))
                ::_exit(1);
        }
        ::_exit(0);
    }
    for (int i = 0; i < 200; i++) {
        vexa::Warnings warnings;
        const auto read = vexa::ReadSound(path, &warnings);
        ASSERT_TRUE(read) << read.Fault().text;
        EXPECT_TRUE(warnings.empty());
        EXPECT_TRUE(*read == sounds[0] || *read == sounds[1]);
    }
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(test::ExitCode(status), 0);
    }
    EXPECT_EQ(folder.Count(), 1U);
}

} // namespace
