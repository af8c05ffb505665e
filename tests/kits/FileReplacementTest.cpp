#include "kits/storage/FileReplacement.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using test::Contents;
using test::TemporaryFolder;

TEST(FileReplacement, TakesThePlaceOnlyWhenCommitted) {
    const TemporaryFolder folder;
    const fs::path file = folder.Write("a.txt", "old");
    {
        auto replacement = kits::FileReplacement::Create(file);
        ASSERT_TRUE(replacement);
        ASSERT_TRUE(replacement->Write("new"));
        EXPECT_EQ(Contents(file), "old");
    }
    EXPECT_EQ(Contents(file), "old");
    EXPECT_EQ(folder.Count(), 1U) << "an abandoned replacement leaves nothing";

    ASSERT_TRUE(kits::ReplaceFile(file, "new"));
    EXPECT_EQ(Contents(file), "new");
    EXPECT_EQ(folder.Count(), 1U);
}

TEST(FileReplacement, KeepsLinksAndPermissions) {
    const TemporaryFolder folder;
    const fs::path file = folder.Write("a.txt", "old");
    ::chmod(file.c_str(), 0640);
    const fs::path link = folder.Path() / "link";
    fs::create_symlink("a.txt", link);
    ASSERT_TRUE(kits::ReplaceFile(link, "new"));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(Contents(file), "new");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));

    const mode_t mask = ::umask(027);
    ASSERT_TRUE(kits::ReplaceFile(folder.Path() / "fresh", ""));
    ::umask(mask);
    EXPECT_EQ(fs::status(folder.Path() / "fresh").permissions(), fs::perms(0640));
}

TEST(FileReplacement, ReportsWhatCannotBeWritten) {
    const TemporaryFolder folder;
    const auto missing = kits::ReplaceFile(folder.Path() / "none" / "a", "x");
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.Fault().text.find("none/a: No such file or directory"), std::string::npos)
        << missing.Fault().text;
    EXPECT_FALSE(kits::ReplaceFile(folder.Path(), "x")) << "a folder is not a file";
    EXPECT_FALSE(kits::ReplaceFile("/dev/full", "x")) << "a device is not a file";
}

} // namespace
