// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXAttributeList.h"
#include "xml/MXDoctype.h"

#include <gtest/gtest.h>

namespace {

using vexa::MXAttributeList;
using vexa::MXDoctype;
using vexa::MXString;

TEST(MXAttributeList, ReadsAndWritesInOrder) {
    struct Case {
        const char* text;
        int32 status;
        const char* written;
    };
    for (const auto& [text, status, written] :
         {Case{"a=\"1\" b=\"2\"", 0, " a=\"1\" b=\"2\""},
          Case{"a=\"1\"b=\"2\"", 0, " a=\"1\" b=\"2\""}, Case{"  a= \"1\"  ", 0, " a=\"1\""},
          Case{"a = \"1\"", 0, " a =\"1\""}, Case{"a=\"x &amp; y\"", 0, " a=\"x &amp; y\""},
          Case{"", 0, ""}, Case{"a='1'", -3, ""}, Case{"a", -3, ""},
          Case{"a=\"1\" b", -3, " a=\"1\""}, Case{"a=\"1", -3, ""}, Case{"a=", -3, ""}}) {
        MXAttributeList list;
        MXString before("old=\"1\"");
        list.ParseString(before);
        MXString consumed(text);
        EXPECT_EQ(list.ParseString(consumed), status) << text;
        EXPECT_STREQ(list.AssembleString().String(), written) << text;
    }
}

TEST(MXAttributeList, GivesTheFirstValueOfAName) {
    MXAttributeList list;
    MXString text("A=\"0\" a=\"1\" a=\"2\" b =\"3\"");
    ASSERT_EQ(list.ParseString(text), 0);
    EXPECT_STREQ(list.GetValue("a").String(), "1");
    EXPECT_STREQ(list.GetValue("b").String(), "") << "the name is \"b \"";
    EXPECT_EQ(list.CountItems(), 4);
}

TEST(MXDoctype, ReadsAndWritesBothKinds) {
    struct Case {
        const char* text;
        const char* name;
        const char* keyword;
        const char* literal;
    };
    for (const auto& [text, name, keyword, literal] :
         {Case{"<!DOCTYPE vexafunction SYSTEM \"loc\">", "vexafunction", "SYSTEM", "loc"},
          Case{"<!DOCTYPE n PUBLIC \"a\" \"b\">", "n", "PUBLIC", "a\" \"b"},
          Case{"<!DOCTYPE note [x]>", "note", "", "x"}}) {
        MXString given(text);
        MXDoctype doctype;
        ASSERT_EQ(doctype.ParseString(given), 0) << text;
        EXPECT_EQ(given.Length(), 0) << text;
        EXPECT_STREQ(doctype.name.String(), name);
        EXPECT_STREQ(doctype.keyword.String(), keyword);
        EXPECT_STREQ(doctype.literal.String(), literal);
        EXPECT_STREQ(doctype.AssembleString().String(), text);
    }
}

TEST(MXDoctype, TakesWhatHasNoEndAndReportsTheRest) {
    struct Case {
        const char* text;
        int32 status;
        const char* literal;
        const char* rest;
    };
    for (const auto& [text, status, literal, rest] :
         {Case{" <?xml?>", -10, "", "<?xml?>"}, Case{"<!DOCTYPE note x>", -11, "", ""},
          Case{"<!DOCTYPE note x y", -11, "", "y"}, Case{"<!DOCTYPE", -11, "", ""},
          Case{"<!DOCTYPE a SYSTEM \"loc\"", 0, "loc", ""}, Case{"<!DOCTYPE a [x", 0, "x", ""},
          Case{"<!DOCTYPE a [x] junk > b", 0, "x", " b"}, Case{"<!DOCTYPE a SYSTEM \"", 0, "", ""},
          Case{"<!DOCTYPE a SYSTEM \"loc\" \n> b", 0, "loc", " b"}}) {
        MXString given(text);
        MXDoctype doctype;
        EXPECT_EQ(doctype.ParseString(given), status) << text;
        EXPECT_STREQ(doctype.literal.String(), literal) << text;
        EXPECT_STREQ(given.String(), rest) << text;
    }
}

} // namespace
