// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/File.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using test::Contents;
using test::TemporaryFolder;

constexpr uint32 kNew = B_WRITE_ONLY | B_CREATE_FILE | B_ERASE_FILE;

TEST(File, HasItsNewContentFromCommitOn) {
    const TemporaryFolder folder;
    const auto path = folder.Write("a", "old");
    const BDirectory directory(folder.Path().c_str());
    {
        BFile file(&directory, "a", kNew);
        ASSERT_EQ(file.InitCheck(), B_OK);
        EXPECT_EQ(file.Write("new", 3), 3);
    }
    EXPECT_EQ(Contents(path), "old");
    BFile file(&directory, "a", kNew);
    EXPECT_EQ(file.Write("new ", 4), 4);
    EXPECT_EQ(file.Write("text", 4), 4);
    EXPECT_EQ(Contents(path), "old");
    EXPECT_EQ(file.Commit(), B_OK);
    EXPECT_EQ(Contents(path), "new text");
    EXPECT_EQ(file.Commit(), B_NO_INIT) << "it is closed";
    EXPECT_EQ(folder.Count(), 1U);

    BFile reader(path.c_str(), B_READ_ONLY);
    char bytes[5] = {};
    EXPECT_EQ(reader.Read(bytes, 4), 4);
    EXPECT_STREQ(bytes, "new ");
    EXPECT_EQ(reader.Read(bytes, 5), 4);
    EXPECT_EQ(reader.Read(bytes, 5), 0);
    EXPECT_LT(reader.Write("x", 1), 0);
}

TEST(File, SaysWhyItCannotBeOpened) {
    const TemporaryFolder folder;
    const BDirectory directory(folder.Path().c_str());
    EXPECT_EQ(BFile(&directory, "../a", kNew).InitCheck(), B_BAD_VALUE);
    EXPECT_EQ(BFile(&directory, std::string("a\0b", 3), kNew).InitCheck(), B_BAD_VALUE);
    EXPECT_EQ(BFile(&directory, "", kNew).InitCheck(), B_BAD_VALUE);
    EXPECT_EQ(BFile(&directory, "a", B_WRITE_ONLY).InitCheck(), B_BAD_VALUE);
    EXPECT_EQ(BFile(&directory, "a", B_READ_ONLY).InitCheck(), B_ENTRY_NOT_FOUND);
    const auto file = folder.Write("file", "");
    EXPECT_EQ(BDirectory(file.c_str()).InitCheck(), B_BAD_TYPE);
    const BDirectory missing((folder.Path() / "none").c_str());
    EXPECT_EQ(missing.InitCheck(), B_ENTRY_NOT_FOUND);
    EXPECT_EQ(BFile(&missing, "a", kNew).InitCheck(), B_ENTRY_NOT_FOUND);
}

} // namespace
