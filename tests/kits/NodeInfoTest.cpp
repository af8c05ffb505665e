// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/NodeInfo.h"

#include "support/TemporaryFolder.h"

#include <string>

#include <gtest/gtest.h>
#include <sys/xattr.h>

namespace {

TEST(BNodeInfo, KeepsTheTypeWhereOthersLookForIt) {
    const test::TemporaryFolder folder;
    const std::string path = folder.Write("a", "");
    if (!folder.KeepsAttributes())
        GTEST_SKIP() << "the file system keeps no attributes";
    char type[B_MIME_TYPE_LENGTH];
    {
        BNode node(path.c_str());
        ASSERT_EQ(node.InitCheck(), B_OK);
        BNodeInfo info(&node);
        EXPECT_EQ(info.GetType(type), B_ENTRY_NOT_FOUND);
        EXPECT_EQ(info.SetType("text/a-longer-one"), B_OK);
        EXPECT_EQ(info.SetType("text/plain"), B_OK);
        EXPECT_EQ(info.SetType(std::string(B_MIME_TYPE_LENGTH, 'x').c_str()), B_BAD_VALUE);
        EXPECT_EQ(info.GetType(type), B_OK);
        EXPECT_STREQ(type, "text/plain");
    }
    EXPECT_EQ(::getxattr(path.c_str(), "user.mime_type", type, sizeof type), 10);
}

} // namespace
