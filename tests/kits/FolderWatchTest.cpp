// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FolderWatch.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

TEST(FolderWatch, FollowsAPathWhoseParentIsMoved) {
    const test::TemporaryFolder folder;
    const fs::path parent = folder.Path() / "a";
    fs::create_directories(parent / "sounds");
    kits::FolderWatch watch({parent / "sounds"});
    const auto changes = [&watch] { return watch.Wait(kits::FolderWatch::kInterval * 3 / 2); };
    EXPECT_TRUE(changes()) << "the first call";
    fs::rename(parent, folder.Path() / "b");
    EXPECT_TRUE(changes());
    changes(); // The system tells that the former one is no longer watched.
    EXPECT_FALSE(changes()) << "there is still none";
    fs::create_directories(parent / "sounds");
    while (changes()) {
    }
    folder.Write("a/sounds/x.xml", "");
    EXPECT_TRUE(changes());
    folder.Write("b/sounds/y.xml", "");
    EXPECT_FALSE(changes()) << "what has been moved away";
}

} // namespace
