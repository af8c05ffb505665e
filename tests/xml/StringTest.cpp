// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXString.h"

#include <gtest/gtest.h>

namespace {

using vexa::MXString;

struct Split {
    const char* text;
    const char* piece;
    const char* rest;
};

TEST(MXString, SplitsOffAtASeparatorThatStays) {
    for (const auto& [text, piece, rest] :
         {Split{"abc", "abc", ""}, Split{"=x", "", "=x"}, Split{"a=b=c", "a", "=b=c"}}) {
        MXString from(text);
        EXPECT_STREQ(from.SplitOffAtFirst("=").String(), piece) << text;
        EXPECT_STREQ(from.String(), rest) << text;
    }
}

TEST(MXString, EndsNamesAtTheTwelveSeparatorsOnly) {
    for (const auto& [text, piece, rest] :
         {Split{"vexafunction", "vexafunction", ""}, Split{"a/", "a", "/"},
          Split{"xml version", "xml", " version"}, Split{"x%y z", "x%y", " z"},
          Split{"x%%y", "x", "%%y"}, Split{"x%y%%", "x%y", "%%"}, Split{"x%", "x%", ""},
          Split{"a>b=<&':,c\vd\fe;f", "a>b=<&':,c\vd\fe", ";f"}, Split{"a\tb", "a", "\tb"},
          Split{"a\nb", "a", "\nb"}, Split{"a\rb", "a", "\rb"}, Split{"a?b", "a", "?b"},
          Split{"a\"b", "a", "\"b"}, Split{"a$b", "a", "$b"}, Split{"a#b", "a", "#b"},
          Split{"a[b", "a", "[b"}, Split{"", "", ""}}) {
        MXString from(text);
        EXPECT_STREQ(from.SplitOffAtFirstNonNameChar().String(), piece) << text;
        EXPECT_STREQ(from.String(), rest) << text;
    }
}

TEST(MXString, KnowsFourBlanks) {
    EXPECT_TRUE(MXString(" \r\n\t<a>").BeginsWithLt());
    EXPECT_FALSE(MXString("").BeginsWithLt());
    EXPECT_FALSE(MXString("   ").BeginsWithLt());
    EXPECT_FALSE(MXString("a<b").BeginsWithLt());
    EXPECT_FALSE(MXString("\v<b").BeginsWithLt());
    EXPECT_STREQ(MXString("\r\n\t x ").RemoveLeadingSpace().String(), "x ");
    EXPECT_STREQ(MXString(" x \n\n").RemoveTrailingSpace().String(), " x");
    EXPECT_STREQ(MXString(" \t ").RemoveTrailingSpace().String(), "");
    EXPECT_STREQ(MXString(" \t ").RemoveLeadingSpace().String(), "");
    EXPECT_STREQ(MXString("\fx\xA0").RemoveLeadingSpace().RemoveTrailingSpace().String(),
                 "\fx\xA0");
}

TEST(MXString, EscapesTwoCharactersAndBack) {
    EXPECT_STREQ(MXString("a &amp;lt; b &gt;&#60;").ResolveLtAmpRef().String(),
                 "a &lt; b &gt;&#60;");
    EXPECT_STREQ(MXString("a<b&c>d\"'").MakeLtAmpRef().String(), "a&lt;b&amp;c>d\"'");
    for (const char* text : {"", "&lt;", "&amp;lt;&amp;amp;", "<&<&", "&&lt;;"})
        EXPECT_STREQ(MXString(text).MakeLtAmpRef().ResolveLtAmpRef().String(), text);
}

} // namespace
