#include "documents/FunctionDocument.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>

namespace {

using namespace vexa;
using test::Contents;
using test::TemporaryFolder;
using testing::ElementsAre;
using testing::HasSubstr;

Function FullFunction(FunctionKind kind) {
    Function function;
    function.kind = kind;
    function.author = "A & B";
    (kind == FunctionKind::Expression ? function.expression : function.sampleFile) =
        "x<y&&y<1 ? &lt; : \xC3\xA4";
    function.frequency = "261.6";
    function.width = "15.0";
    function.linkFunction = {"1", "2"};
    function.linkScreen = {"0.25", ""};
    return function;
}

TEST(FunctionDocument, BothKindsComeBackFromTheirFiles) {
    const TemporaryFolder folder;
    for (const FunctionKind kind : {FunctionKind::Expression, FunctionKind::Sample}) {
        const auto path = folder.Path() / "f";
        const Function written = FullFunction(kind);
        ASSERT_TRUE(WriteFunction(path, written));
        Function start;
        start.frequency = written.frequency;
        start.linkScreen.y = "overwritten by the empty text";
        ReadReport report;
        const auto read = ReadFunction(path, start, report);
        ASSERT_TRUE(read) << report.reason;
        EXPECT_EQ(*read, written);
        EXPECT_THAT(report.warnings, ElementsAre());

        char type[64] = {};
        if (::getxattr(path.c_str(), "user.mime_type", type, sizeof type) > 0) {
            EXPECT_STREQ(type, "text/orvo-Vexa-function");
        }
    }
    EXPECT_THAT(
        Contents(folder.Path() / "f"),
        HasSubstr("  <samplefile>x&lt;y&amp;&amp;y&lt;1 ? &amp;lt; : \xC3\xA4</samplefile>\n"
                  "  <frequency>261.6</frequency>\n  <display>"));
    EXPECT_THAT(Contents(folder.Path() / "f"), Not(HasSubstr("<expression>")));
}

TEST(FunctionDocument, WhatIsMissingStaysAndIsReported) {
    const TemporaryFolder folder;
    const auto path = folder.Write("f", "<vexafunction><expression>  x </expression><display>"
                                        "<linkfunction><x>7</x></linkfunction><x>8</x>"
                                        "</display></vexafunction><!-- open");
    const Function start = FullFunction(FunctionKind::Sample);
    ReadReport report;
    const auto read = ReadFunction(path, start, report);
    ASSERT_TRUE(read);
    Function expected = start;
    expected.kind = FunctionKind::Expression;
    expected.expression = "x";
    expected.linkFunction.x = "7";
    EXPECT_EQ(*read, expected);
    EXPECT_THAT(report.warnings, ElementsAre(HasSubstr("a comment without"),
                                             HasSubstr("\"info\" in \"vexafunction\""),
                                             HasSubstr("\"width\" in \"display\""),
                                             HasSubstr("\"y\" in \"linkfunction\""),
                                             HasSubstr("\"linkscreenrel\" in \"display\"")));
    for (const std::string& warning : report.warnings)
        EXPECT_EQ(warning.find(path.string() + ": "), 0U) << warning;
}

TEST(FunctionDocument, SaysWhyAFileIsNoFunction) {
    const TemporaryFolder folder;
    const auto missing = folder.Path() / "none";
    const struct {
        std::filesystem::path path;
        std::string alert;
        std::string reason;
    } cases[] = {
        {missing, "Could not load \n" + missing.string(), "none: No such file or directory"},
        {folder.Write("empty", ""), "Could not load \n", "empty: no root element"},
        {folder.Write("blank", " \n"), "Could not load \n", "blank: nothing but blanks"},
        {folder.Write("tag", "<vexafunction"), "Could not load \n", "tag: a tag without \">\""},
        {folder.Write("binary", std::string("\0\1<\0a>", 6)), "Could not load \n",
         "binary: no root element"},
        {folder.Write("sound", "<vexasound/><other></other>"), kInvalidFunction,
         "sound: This is not a valid function. (root element \"other\")"},
    };
    for (const auto& [path, alert, reason] : cases) {
        ReadReport report;
        const auto read = ReadFunction(path, {}, report);
        ASSERT_FALSE(read) << path;
        EXPECT_THAT(read.Fault().text, HasSubstr(alert));
        EXPECT_THAT(report.reason, HasSubstr(reason));
    }

    const auto written = WriteFunction(missing / "f", {});
    ASSERT_FALSE(written);
    EXPECT_THAT(written.Fault().text, HasSubstr("none/f: No such file or directory"));
}

} // namespace
