// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/String.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

namespace {

TEST(BString, CutsRangesToTheString) {
    BString text("hello");
    BString piece;
    text.CopyInto(piece, 3, 100);
    EXPECT_STREQ(piece.String(), "lo");
    text.MoveInto(piece, -5, 7);
    EXPECT_STREQ(piece.String(), "hello") << "a range that begins before the string";
    EXPECT_EQ(text.Length(), 0);
    EXPECT_STREQ(text.String(), "");
    text.Remove(0, 3).Remove(-1, 1);
    EXPECT_EQ(text.ByteAt(0), 0);
    EXPECT_EQ(text.ByteAt(-1), 0);
}

TEST(BString, ReplacesFromLeftToRightOnce) {
    EXPECT_STREQ(BString("aaa").ReplaceAll("aa", "b").String(), "ba");
    EXPECT_STREQ(BString("aa").ReplaceAll("a", "aa").String(), "aaaa");
    EXPECT_STREQ(BString("abc").ReplaceAll("", "x").String(), "abc");
}

TEST(BString, KeepsZeroBytes) {
    using namespace std::string_view_literals;
    BString text("a\0b"sv);
    EXPECT_EQ(text.Length(), 3);
    EXPECT_EQ(text.FindFirst("b"), 2);
    text.ReplaceAll("b", "\0c"sv).Remove(0, 1);
    EXPECT_TRUE(text == BString("\0\0c"sv));
}

/// Compares every operation with that of a std::string; removal at the front is the most frequent.
TEST(BString, DoesWhatAPlainStringDoes) {
    std::mt19937 random(11);
    const auto below = [&random](std::size_t n) { return std::size_t(random() % (n + 1)); };
    BString text;
    std::string plain;
    std::size_t longest = 0;
    for (int i = 0; i < 20000; i++) {
        const std::size_t from = random() % 4 ? 0 : below(plain.size());
        const std::size_t length = below(plain.size() - from);
        const std::string bytes(below(50), char('a' + i % 26));
        BString piece;
        switch (random() % 6) {
        case 0:
        case 1:
            text += bytes;
            plain += bytes;
            break;
        case 2:
            text = BString(bytes) += text;
            plain.insert(0, bytes);
            break;
        case 3:
            text.Remove(int64(from), int64(length) / 6);
            plain.erase(from, length / 6);
            break;
        case 4:
            text.MoveInto(piece, int64(from), int64(length) / 6);
            ASSERT_EQ(std::string_view(piece), plain.substr(from, length / 6));
            plain.erase(from, length / 6);
            break;
        default:
            piece = text;
            piece.Append(piece);
            ASSERT_EQ(std::string_view(piece), plain + plain);
            text = std::move(piece);
            text.Remove(text.Length() - int64(plain.size()), int64(plain.size()));
        }
        longest = std::max(longest, plain.size());
        ASSERT_EQ(std::string_view(text), plain);
        ASSERT_STREQ(text.String(), plain.c_str());
        ASSERT_EQ(text.FindFirst("cc"), int64(plain.find("cc")));
    }
    EXPECT_GT(longest, 300U) << "much was never eaten up";
}

} // namespace
