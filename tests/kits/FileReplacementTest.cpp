// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FileReplacement.h"

#include "support/TemporaryFolder.h"

#include <cerrno>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

/// The reason for which fchmod fails; 0 if it does not.
static int chmodFails = 0;

/// Stands before the system's.
extern "C" int fchmod(int descriptor, mode_t mode) noexcept {
    if (chmodFails == 0)
        return int(::syscall(SYS_fchmod, descriptor, mode));
    errno = chmodFails;
    return -1;
}

namespace {

namespace fs = std::filesystem;
using test::Contents;
using test::TemporaryFolder;

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

    // A link to a link in another folder, which leads to no file yet, and one in a circle.
    fs::create_directory(folder.Path() / "b");
    fs::create_symlink("b/second", folder.Path() / "first");
    fs::create_symlink("../c.txt", folder.Path() / "b/second");
    ASSERT_TRUE(kits::ReplaceFile(folder.Path() / "first", "made"));
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "first"));
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "b/second"));
    EXPECT_EQ(Contents(folder.Path() / "c.txt"), "made");
    fs::create_symlink("circle", folder.Path() / "circle");
    EXPECT_FALSE(kits::ReplaceFile(folder.Path() / "circle", "lost"));
    EXPECT_TRUE(fs::is_symlink(folder.Path() / "circle"));

    const mode_t mask = ::umask(027);
    ASSERT_TRUE(kits::ReplaceFile(folder.Path() / "fresh", ""));
    EXPECT_EQ(fs::status(folder.Path() / "fresh").permissions(), fs::perms(0640));
    // The folder's access list for what is made in it, which replaces the mask: everything for
    // user 9 and the group, nothing for others.
    const unsigned list[] = {2, 0x70001, ~0U, 0x70002, 9, 0x70004, ~0U, 0x70010, ~0U, 0x20, ~0U};
    const bool hasLists =
        ::setxattr(folder.Path().c_str(), "system.posix_acl_default", list, sizeof list, 0) == 0;
    ASSERT_TRUE(kits::ReplaceFile(folder.Path() / "listed", ""));
    ASSERT_TRUE(kits::ReplaceFile(file, "newer"));
    ::umask(mask);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    if (!hasLists)
        GTEST_SKIP() << "the file system has no access lists";
    EXPECT_EQ(fs::status(folder.Path() / "listed").permissions(), fs::perms(0660));
    EXPECT_EQ(::getxattr(file.c_str(), "system.posix_acl_access", nullptr, 0), -1)
        << "the old one had no list";
}

TEST(FileReplacement, SavesWherePermissionsCannotBeSet) {
    const TemporaryFolder folder;
    const fs::path file = folder.Write("a.txt", "old");
    for (const int reason : {EPERM, EACCES, ENOTSUP, EIO}) {
        chmodFails = reason;
        EXPECT_TRUE(kits::ReplaceFile(folder.Path() / std::to_string(reason), "new"));
        EXPECT_EQ(bool(kits::ReplaceFile(file, "new")), reason != EIO) << "a fault of the disk";
    }
    chmodFails = 0;
    EXPECT_EQ(Contents(file), "new");
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600)) << "no wider than it was";
}

TEST(FileReplacement, KeepsOwnerRightsAndAttributesAndPartsAHardLink) {
    const TemporaryFolder folder;
    const fs::path file = folder.Write("a.txt", "old");
    const fs::path other = folder.Path() / "b.txt";
    fs::create_hard_link(file, other);
    ASSERT_EQ(::chmod(file.c_str(), 0604), 0);
    const bool mayGiveAway = ::chown(file.c_str(), 65534, 65534) == 0;
    const bool keepsAttributes = ::setxattr(file.c_str(), "user.note", "mine", 4, 0) == 0 &&
                                 ::setxattr(file.c_str(), "user.empty", "", 0, 0) == 0;
    ASSERT_TRUE(kits::ReplaceFile(file, "new"));

    struct stat status {};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0604U);
    EXPECT_EQ(status.st_uid, mayGiveAway ? 65534 : ::geteuid());
    EXPECT_EQ(status.st_gid, mayGiveAway ? 65534 : ::getegid());
    EXPECT_EQ(status.st_nlink, 1U);
    EXPECT_EQ(Contents(other), "old");
    if (!keepsAttributes)
        GTEST_SKIP() << "the file system keeps no attributes";
    char value[8] = "";
    EXPECT_EQ(::getxattr(file.c_str(), "user.note", value, sizeof value), 4);
    EXPECT_STREQ(value, "mine");
    EXPECT_EQ(::getxattr(file.c_str(), "user.empty", value, sizeof value), 0);
}

TEST(FileReplacement, ReportsWhatCannotBeWritten) {
    const TemporaryFolder folder;
    const auto missing = kits::ReplaceFile(folder.Path() / "none" / "a", "x");
    ASSERT_FALSE(missing);
    EXPECT_NE(missing.Fault().text.find("none/a: No such file or directory"), std::string::npos)
        << missing.Fault().text;
    const fs::path pipe = folder.Path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const auto& [path, reason] : {std::pair<fs::path, std::string>{"/dev/full", "a device"},
                                       {pipe, "a pipe"},
                                       {folder.Path(), "a folder"}}) {
        const auto refused = kits::ReplaceFile(path, "x");
        ASSERT_FALSE(refused) << path;
        EXPECT_EQ(refused.Fault().text,
                  "could not write " + path.string() + ": it is " + reason + ", not a file");
    }
    // Fails at once, not after hours of sound have been written.
    const auto begun = kits::FileReplacement::Create(folder.Path() / std::string(300, 'a'));
    ASSERT_FALSE(begun);
    EXPECT_TRUE(begun.Fault().text.ends_with("aaa: File name too long")) << begun.Fault().text;
}

} // namespace
