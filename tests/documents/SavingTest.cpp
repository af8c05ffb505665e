// Saving when others save too, and when the folder takes nothing.
#include "documents/SoundDocument.h"
#include "support/Limits.h"
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

/// Whoever looks sees one document or the other, whole.
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
        vexa::ReadReport report;
        const auto read = vexa::ReadSound(path, vexa::Sound(), report);
        ASSERT_TRUE(read) << report.reason;
        EXPECT_TRUE(report.warnings.empty());
        EXPECT_TRUE(*read == sounds[0] || *read == sounds[1]);
    }
    for (const pid_t child : children) {
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(test::ExitCode(status), 0);
    }
    EXPECT_EQ(folder.Count(), 1U);
}

TEST(Saving, AFolderThatTakesNothingKeepsTheDocument) {
    const test::TemporaryFolder folder;
    const fs::path path = folder.Path() / "sound.xml";
    ASSERT_TRUE(vexa::WriteSound(path, SoundOf("old")));
    ::chmod(path.c_str(), 0666);
    kits::Result<void> saved;
    test::WithReadOnlyFolders({folder.Path()},
                              [&] { saved = vexa::WriteSound(path, SoundOf("new")); });
    ASSERT_FALSE(saved);
    EXPECT_NE(saved.Fault().text.find("sound.xml: Permission denied"), std::string::npos)
        << saved.Fault().text;
    vexa::ReadReport report;
    EXPECT_EQ(vexa::ReadSound(path, vexa::Sound(), report)->author, "old");
    EXPECT_EQ(folder.Count(), 1U);
}

TEST(Saving, AFullDiskKeepsTheDocument) {
    const test::TemporaryFolder folder;
    const fs::path path = folder.Path() / "sound.xml";
    ASSERT_TRUE(vexa::WriteSound(path, SoundOf("old")));
    for (const rlim_t room : {rlim_t{0}, rlim_t{1}, rlim_t{1000}, rlim_t{65536}}) {
        test::WithFileSizeLimit(room, [&] {
            EXPECT_FALSE(vexa::WriteSound(path, SoundOf(std::string(100'000, 'n')))) << room;
        });
        vexa::ReadReport report;
        EXPECT_EQ(vexa::ReadSound(path, vexa::Sound(), report)->author, "old");
        EXPECT_EQ(folder.Count(), 1U);
    }
}

} // namespace
