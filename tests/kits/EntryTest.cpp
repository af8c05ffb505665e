// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/Entry.h"

#include "kits/support/Message.h"
#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;

TEST(Path, IsAbsoluteAndInOneForm) {
    EXPECT_STREQ(BPath("/a//b/./c/../").Path(), "/a/b");
    EXPECT_STREQ(BPath("/a", "b/c").Path(), "/a/b/c");
    EXPECT_STREQ(BPath("/a/b").Leaf(), "b");
    EXPECT_STREQ(BPath("/").Path(), "/");
    EXPECT_STREQ(BPath("/").Leaf(), "");
    EXPECT_EQ(BPath().InitCheck(), B_NO_INIT);
    EXPECT_EQ(BPath("").InitCheck(), B_NO_INIT);
    EXPECT_EQ(BPath("/a", "/b").InitCheck(), B_NO_INIT) << "an absolute leaf";
    const test::CurrentFolder current("/usr");
    EXPECT_EQ(BPath("bin/"), BPath("/usr/bin"));

    BPath path("/a/b");
    EXPECT_EQ(path.GetParent(&path), B_OK);
    EXPECT_STREQ(path.Path(), "/a");
    EXPECT_EQ(path.GetParent(&path), B_OK);
    EXPECT_EQ(path.GetParent(&path), B_ENTRY_NOT_FOUND);
}

TEST(Entry, HasOnePathAndFollowsItsOwnLinkOnRequest) {
    const TemporaryFolder folder;
    const fs::path real = fs::canonical(folder.Path());
    folder.Write("real/file", "");
    fs::create_directory_symlink("real", real / "link");
    fs::create_symlink("file", real / "real/alias");

    fs::create_directories(real / "deep/inner");
    fs::create_directory_symlink("deep/inner", real / "into");
    EXPECT_EQ(BPath((real / "into/../none/./../file").c_str()).Path(),
              (real / "deep/file").string())
        << "\"..\" is the parent of the folder to which a link leads";
    EXPECT_EQ(BPath((real / "into/file").c_str()).Path(), (real / "into/file").string());

    const BEntry alias((real / "link/alias").c_str());
    BPath path;
    EXPECT_EQ(alias.GetPath(&path), B_OK);
    EXPECT_EQ(path.Path(), (real / "real/alias").string());
    entry_ref ref;
    EXPECT_EQ(alias.GetRef(&ref), B_OK);
    EXPECT_EQ(ref, (entry_ref{(real / "real").string(), "alias"}));
    EXPECT_EQ(BEntry(&ref, true).GetPath(&path), B_OK);
    EXPECT_EQ(path.Path(), (real / "real/file").string());

    BEntry parent;
    EXPECT_EQ(alias.GetParent(&parent), B_OK);
    EXPECT_EQ(BEntry((real / "none").c_str()).InitCheck(), B_OK);
    EXPECT_NE(BEntry((real / "none/file").c_str()).InitCheck(), B_OK);
}

TEST(EntryRef, TravelsInMessages) {
    BMessage message(1);
    const char* const paths[] = {"/", "/a", "/a/b c/\xC3\xA4\xFF"};
    for (const char* path : paths) {
        entry_ref ref;
        ASSERT_EQ(get_ref_for_path(path, &ref), B_OK);
        EXPECT_STREQ(BPath(&ref).Path(), path);
        EXPECT_EQ(message.AddRef("refs", &ref), B_OK);
    }
    const BMessage copy = message;
    entry_ref ref;
    for (int32 i = 0; i < 3; i++) {
        EXPECT_EQ(copy.FindRef("refs", i, &ref), B_OK);
        EXPECT_STREQ(BPath(&ref).Path(), paths[i]);
    }
    EXPECT_EQ(copy.FindRef("refs", 3, &ref), B_BAD_INDEX);
    EXPECT_EQ(copy.FindRef("none", &ref), B_NAME_NOT_FOUND);
    message.AddData("damaged", B_REF_TYPE, "/a", 2);
    EXPECT_EQ(message.FindRef("damaged", &ref), B_BAD_VALUE);
    EXPECT_EQ(get_ref_for_path("", &ref), B_BAD_VALUE);
}

} // namespace
