// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FileName.h"

#include "kits/storage/FileReplacement.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

struct Refused {
    std::string name;
    std::string_view reason;
};

TEST(FileName, RefusesWhatIsNoNameAndSaysWhy) {
    const std::string long256(256, 'a');
    for (const auto& [name, reason] : std::initializer_list<Refused>{
             {"", "needs a name"},
             {".", "name of a folder"},
             {"..", "name of a folder"},
             {"/", "slash"},
             {"a/b", "slash"},
             {"../a", "slash"},
             {"a/", "slash"},
             {".hidden", "begins with a dot"},
             {"...", "begins with a dot"},
             {"a\nb", "cannot be shown"},
             {"\t", "cannot be shown"},
             {std::string("a\0b", 3), "cannot be shown"},
             {"a\x7f", "cannot be shown"},
             {long256, "longer than 255 bytes"},
             {std::string(127, 'a') + std::string("\xc3\xa4", 2) + std::string(127, 'a'),
              "longer than 255 bytes"},
             {"\xff", "not a text in UTF-8"},
             {"a\xc3", "not a text in UTF-8"},
             {"\xc0\xaf", "not a text in UTF-8"},
             {"\xed\xa0\x80", "not a text in UTF-8"},
             {"\xf4\x90\x80\x80", "not a text in UTF-8"},
             {"\xf8\x90\x80\x80", "not a text in UTF-8"},
         }) {
        const auto checked = kits::CheckFileName(name);
        ASSERT_FALSE(checked) << name;
        EXPECT_NE(checked.Fault().text.find(reason), std::string::npos) << checked.Fault().text;
        EXPECT_EQ(checked.Fault().text.find('\n'), std::string::npos) << "a message has one line";
    }
}

/// Catches accepted names that cannot be written, the longest names included.
TEST(FileName, WhatPassesCanBeWritten) {
    const test::TemporaryFolder folder;
    for (const std::string& name :
         {std::string("a"), std::string(" "), std::string("a."), std::string("-rf"),
          std::string("a b.xml"), std::string("\xc3\xa4\xe2\x99\xab\xf0\x9f\x8e\xb9"),
          std::string("%s\\\"'`$(id)"), std::string(255, 'a')}) {
        EXPECT_TRUE(kits::CheckFileName(name)) << name;
        EXPECT_TRUE(kits::ReplaceFile(folder.Path() / name, name)) << name;
        EXPECT_EQ(test::Contents(folder.Path() / name), name);
    }
}

} // namespace
