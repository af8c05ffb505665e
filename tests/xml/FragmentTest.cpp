// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/Limits.h"
#include "xml/MXFragment.h"

#include <random>

#include <gtest/gtest.h>

namespace {

using namespace vexa;

/// Returns the fragment in its compact form after reading it; "" if it cannot be read.
std::string Reread(std::string_view text) {
    MXString given(text);
    MXFragment fragment(MX_UNPARSED);
    if (fragment.ParseString(given) != 0)
        return "";
    return std::string(std::string_view(fragment.AssembleString()));
}

TEST(MXFragment, ReadsEachKind) {
    struct Case {
        const char* text;
        long type;
        const char* name;
        const char* written;
    };
    for (const auto& [text, type, name, written] :
         {Case{"<a>x</a>", MX_ELEMENT, "a", "<a>x</a>"},
          Case{"<a>x</b>", MX_ELEMENT, "a", "<a>x</a>"}, Case{"<a>x", MX_ELEMENT, "a", "<a>x</a>"},
          Case{"<a>  \n</a>", MX_ELEMENT, "a", "<a></a>"},
          Case{"<a/>", MX_EMPTY_ELEMENT, "a", "<a/>"}, Case{"<a />", MX_EMPTY_ELEMENT, "a", "<a/>"},
          Case{"<a x=\"1\"/>", MX_EMPTY_ELEMENT, "a", "<a x=\"1\"/>"},
          Case{"<a x=\"1>2\">", MX_ELEMENT, "a", "<a>2\"></a>"},
          Case{"<a x='1'>t</a>", MX_ELEMENT, "a", "<a>t</a>"},
          Case{"<?xml version=\"1.0\"?>", MX_PROCESSING_INSTRUCTION, "xml",
               "<?xml version=\"1.0\"?>"},
          Case{"<!-- c &lt; -->", MX_COMMENT, " c &lt; ", "<!-- c &lt; -->"},
          Case{"<![CDATA[ <z> ]]>", MX_CDATA, " <z> ", "<![CDATA[ <z> ]]>"},
          Case{"  1 &lt; 2 &amp;&amp; 3  ", MX_TEXT, "1 < 2 && 3", "1 &lt; 2 &amp;&amp; 3"},
          Case{"<>x</>", MX_ELEMENT, "", "<>x</>"}}) {
        MXString given(text);
        MXFragment fragment(MX_UNPARSED);
        EXPECT_EQ(fragment.ParseString(given), 0) << text;
        EXPECT_EQ(fragment.Type(), type) << text;
        EXPECT_STREQ(fragment.name.String(), name) << text;
        EXPECT_STREQ(fragment.AssembleString().String(), written) << text;
    }
}

TEST(MXFragment, ReportsWhatIsNoFragment) {
    struct Case {
        const char* text;
        int32 status;
        const char* rest;
    };
    for (const auto& [text, status, rest] :
         {Case{"<a", -7, ""}, Case{"<", -7, ""}, Case{"<?pi", -4, ""}, Case{"<?", -4, ""},
          Case{"<!-- c --", -5, ""}, Case{"<![CDATA[z]]", -6, ""}, Case{"   ", -9, ""},
          Case{"", -9, ""}, Case{" <!DOCTYPE x>", -8, "<!DOCTYPE x>"}, Case{"<!", -8, "<!"},
          Case{"\n</a>", -2, "</a>"}}) {
        MXString given(text);
        MXFragment fragment(MX_TEXT, "before");
        EXPECT_EQ(fragment.ParseString(given), status) << text;
        EXPECT_EQ(fragment.Type(), MX_UNPARSED) << text;
        EXPECT_STREQ(given.String(), rest) << text;
    }
    EXPECT_STREQ(MXFragment(64).AssembleString().String(),
                 "!!!!DEFAULT IN MXFragment::AssembleString()!!!!");
}

TEST(MXFragment, AFaultInsideAnElementEndsTheElement) {
    MXString given("<a><b>x<!DECL>y</b>z<!-- open");
    MXFragment fragment(given);
    // The declaration closes b, b's end tag closes a.
    EXPECT_STREQ(fragment.AssembleString().String(), "<a><b>x</b>y</a>");
    EXPECT_STREQ(given.String(), "z<!-- open");
    EXPECT_EQ(Reread("<a><b/>z<!-- open"), "<a><b/>z</a>");
    EXPECT_EQ(Reread("<a><b>t</b><c"), "<a><b>t</b></a>");
    using namespace std::string_view_literals;
    EXPECT_EQ(Reread("<a>x\0y</a>"sv), "<a>x\0y</a>"sv) << "a zero is a byte of a text";
}

TEST(MXFragment, WritesIndentedLines) {
    const auto indented = [](const char* text, const char* indent) {
        MXString given(text);
        return std::string(MXFragment(given).AssembleString(indent, "  ").String());
    };
    EXPECT_EQ(indented("<a>x</a>", ""), "<a>x</a>\n");
    EXPECT_EQ(indented("<a></a>", "-"), "-<a></a>\n");
    EXPECT_EQ(indented("<a><b/></a>", ""), "<a><b/></a>\n");
    EXPECT_EQ(indented("<a><b></b></a>", ""), "<a>\n  <b></b>\n</a>\n");
    EXPECT_EQ(indented("<a><b/><c i=\"1\">t</c></a>", ""),
              "<a>\n  <b/>\n  <c i=\"1\">t</c>\n</a>\n");
    EXPECT_EQ(indented("<a>t<b><c>u</c></b></a>", "  "),
              "  <a>\n    t\n    <b>\n      <c>u</c>\n    </b>\n  </a>\n");

    MXString given("<r><a>t</a><!--a--></r>");
    MXFragment tree(given);
    const MXFragmentList found = tree.FindFragment(MX_ELEMENT | MX_COMMENT, "a");
    EXPECT_STREQ(found.AssembleString("-", " ").String(), "-<a>t</a>\n-<!--a-->\n");
}

TEST(MXFragment, FindsInDocumentOrderAndOwnsNothingFound) {
    MXString given("<b n=\"1\"><a><b/></a>b<!--b--><B/><c><b>t</b></c></b>");
    MXFragment tree(given);
    {
        const MXFragmentList found = tree.FindFragment(MX_ELEMENT | MX_EMPTY_ELEMENT, "b");
        ASSERT_EQ(found.CountItems(), 3);
        EXPECT_EQ(found.ItemAt(0), &tree);
        EXPECT_EQ(found.ItemAt(1)->Type(), MX_EMPTY_ELEMENT);
        EXPECT_STREQ(found.ItemAt(2)->GetContainedText().String(), "t");
        const MXFragmentList again = found.FindFragment(MX_ELEMENT, "b");
        ASSERT_EQ(again.CountItems(), 3) << "b and the b in it, and that b once more";
        EXPECT_EQ(again.ItemAt(1), again.ItemAt(2));
    }
    EXPECT_EQ(tree.FindFragment(MX_TEXT | MX_COMMENT, "b").CountItems(), 2);
    EXPECT_STREQ(tree.AssembleString().String(),
                 "<b n=\"1\"><a><b/></a>b<!--b--><B/><c><b>t</b></c></b>");
}

TEST(MXFragment, CollectsTheTextsOfElements) {
    MXString given("<a>x<b>y</b><![CDATA[z]]><!--c--><?p?></a>");
    EXPECT_STREQ(MXFragment(given).GetContainedText().String(), "xy");
    EXPECT_STREQ(MXFragment(MX_TEXT, "t").GetContainedText().String(), "t");
    EXPECT_STREQ(MXFragment(MX_COMMENT, "t").GetContainedText().String(), "");
}

TEST(MXFragment, IsBuiltFromItsParts) {
    MXFragment empty(MX_EMPTY_ELEMENT, "e", "t=\"1\" broken");
    empty.Add("never written");
    EXPECT_STREQ(empty.AssembleString().String(), "<e t=\"1\"/>");
    MXFragment element("a", "i=\"1\"", "x<y");
    EXPECT_EQ(element.Add(new MXFragment("b", "")), 0);
    EXPECT_EQ(element.Add(static_cast<MXFragment*>(nullptr)), -1);
    EXPECT_STREQ(element.AssembleString().String(), "<a i=\"1\">x&lt;y<b></b></a>");
}

TEST(MXFragment, WhateverWasReadIsWrittenSoThatItReadsTheSame) {
    constexpr const char* kTokens[] = {"<a",   "<b ", "</a>",  ">",         "/>",  " c=\"1\"",
                                       "&lt;", "&",   "<!--",  "-->",       "<?p", "?>",
                                       " ",    "\n",  "x",     "<![CDATA[", "]]>", "\"",
                                       "=",    "<!D", "&amp;", "</",        "%",   ">"};
    std::mt19937 random(5);
    for (int i = 0; i < 20000; i++) {
        MXString garbage("<r>");
        for (int k = 0; k < 30; k++)
            garbage.Append(kTokens[random() % std::size(kTokens)]);
        const MXString given = garbage;
        const MXFragment first(garbage);
        for (const bool compact : {true, false}) {
            const MXString text = compact ? first.AssembleString() : first.AssembleString("", "  ");
            MXString again = text;
            const MXFragment second(again);
            ASSERT_STREQ(
                (compact ? second.AssembleString() : second.AssembleString("", "  ")).String(),
                text.String())
                << given.String();
        }
    }
}

/// Catches recursion, as the depth exceeds any stack, and quadratic work, which would not end.
TEST(MXFragment, MillionsOfNestedElements) {
    // With a sanitizer each of the objects takes many times the memory.
    constexpr int kDepth = test::kSanitized ? 1'000'000 : 2'000'000;
    std::string nested;
    nested.reserve(kDepth * 7 + 1);
    for (int i = 0; i < kDepth; i++)
        nested += "<a>";
    nested += "x";
    const MXString open{std::string_view(nested)};
    for (int i = 0; i < kDepth; i++)
        nested += "</a>";

    MXString given{std::string_view(nested)};
    MXFragment tree(MX_UNPARSED);
    ASSERT_EQ(tree.ParseString(given), 0);
    EXPECT_EQ(given.Length(), 0);
    EXPECT_STREQ(tree.GetContainedText().String(), "x");
    EXPECT_EQ(tree.FindFragment(MX_ELEMENT, "a").CountItems(), kDepth);
    EXPECT_TRUE(std::string_view(tree.AssembleString()) == nested);

    given = open;
    ASSERT_EQ(tree.ParseString(given), 0) << "without any end tag";
    EXPECT_TRUE(std::string_view(tree.AssembleString()) == nested);
}

TEST(MXFragment, ManySiblingsAndManyAttributes) {
    constexpr int kCount = test::kSanitized ? 100'000 : 1'000'000;
    std::string text = "<r";
    for (int i = 0; i < kCount; i++)
        text += " a=\"1\"";
    text += ">";
    for (int i = 0; i < kCount; i++)
        text += "<b/> & ";
    MXString given{std::string_view(text)};
    const MXFragment tree(given);
    EXPECT_EQ(tree.attributes.CountItems(), kCount);
    EXPECT_EQ(tree.children.size(), 2U * kCount);
}

} // namespace
