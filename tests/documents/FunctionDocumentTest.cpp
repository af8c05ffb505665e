// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/FunctionDocument.h"

#include "documents/ApplySound.h"
#include "support/TemporaryFolder.h"

#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

namespace {

using namespace vexa;
using test::Contents;
using test::TemporaryFolder;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

Function FullFunction(FunctionKind kind) {
    Function function;
    function.kind = kind;
    function.author = "A & B";
    const std::map<FunctionKind, std::string*> texts{
        {FunctionKind::Expression, &function.expression},
        {FunctionKind::Sample, &function.sampleFile},
        {FunctionKind::Picture, &function.pictureFile}};
    *texts.at(kind) = "x<y&&y<1 ? &lt; : \xC3\xA4";
    function.frequency = "261.6";
    function.width = "15.0";
    function.linkFunction = {"1", "2"};
    function.linkScreen = {"0.25", "0"};
    function.macros[0].value = "0.25";
    function.macros[3] = {"1", "74"};
    function.kept = {"<spice><a>0.25</a></spice><later b=\"1\"/>", "<tags>x &amp; y</tags>"};
    return function;
}

TEST(FunctionDocument, EachKindComesBackFromItsFile) {
    const TemporaryFolder folder;
    std::map<FunctionKind, std::string> files;
    for (const FunctionKind kind :
         {FunctionKind::Expression, FunctionKind::Sample, FunctionKind::Picture}) {
        const auto path = folder.Path() / "f";
        Function written = FullFunction(kind);
        // Elements of another kind of function are kept, as unknown elements are.
        if (kind == FunctionKind::Picture)
            written.kept.root = "<samplefile>a</samplefile><frequency>7</frequency>";
        else
            written.kept.root += "<picturefile>a</picturefile>";
        ASSERT_TRUE(WriteFunction(path, written));
        Function start;
        start.frequency = written.frequency;
        Warnings warnings;
        const auto read = ReadFunction(path, start, &warnings);
        ASSERT_TRUE(read) << read.Fault().text;
        EXPECT_EQ(*read, written);
        EXPECT_THAT(kits::Texts(warnings), Each(HasSubstr(", found an element <")));
        EXPECT_EQ(warnings.size(), kind == FunctionKind::Picture ? 2U : 3U)
            << "one for each unknown element";

        char type[64] = {};
        ::getxattr(path.c_str(), "user.mime_type", type, sizeof type);
        EXPECT_STREQ(type, folder.KeepsAttributes() ? "text/orvo-Vexa-function" : "");
        files[kind] = Contents(path);
    }
    const std::string& sample = files[FunctionKind::Sample];
    EXPECT_THAT(
        sample,
        HasSubstr("  <samplefile>x&lt;y&amp;&amp;y&lt;1 ? &amp;lt; : \xC3\xA4</samplefile>\n"
                  "  <frequency>261.6</frequency>\n  <display>"));
    EXPECT_THAT(sample, Not(HasSubstr("<expression>")));
    EXPECT_THAT(
        files[FunctionKind::Picture],
        HasSubstr("<!DOCTYPE vexapicturefunction SYSTEM \"vexa.dtd\">\n\n<vexapicturefunction>\n"));
    EXPECT_THAT(files[FunctionKind::Picture],
                HasSubstr("  </info>\n"
                          "  <picturefile>x&lt;y&amp;&amp;y&lt;1 ? &amp;lt; : \xC3\xA4"
                          "</picturefile>\n  <display>"));
    EXPECT_THAT(sample, HasSubstr("  </display>\n  <macros>\n    <a>0.25</a>\n    <d>1</d>\n"
                                  "    <dctl>74</dctl>\n  </macros>\n  <spice>"));
}

TEST(FunctionDocument, MacrosAreFreshUnlessTheDocumentHasThem) {
    const TemporaryFolder folder;
    const auto read = [&](const std::string& macros, Warnings& warnings) {
        return *ReadFunction(
            folder.Write("f", "<vexafunction><info/><expression>a</expression><display/>" + macros +
                                  "</vexafunction>"),
            FullFunction(FunctionKind::Sample), &warnings);
    };
    Warnings without;
    EXPECT_EQ(read("", without).macros, Function().macros);
    Warnings ignored;
    EXPECT_EQ(read("<morph><macros><a>0.9</a></macros></morph>", ignored).macros,
              Function().macros);
    Warnings warnings;
    const Function odd = read("<macros>\n<a>7</a><actl>128</actl><b>z</b><c>nan</c>"
                              "<cctl>3</cctl></macros>",
                              warnings);
    EXPECT_EQ(warnings.size(), without.size() + 4);
    EXPECT_THAT(kits::Texts(warnings),
                testing::Contains(HasSubstr(":2:1: <a>: \"7\" counts as 1")));
    vexa::Macros macros;
    vexa::ApplyMacros(odd, macros);
    EXPECT_EQ(macros[0].value, 1);
    EXPECT_EQ(macros[0].controller, 16);
    EXPECT_EQ(macros[1].value, 0);
    EXPECT_EQ(macros[2].value, 0.5F);
    EXPECT_EQ(macros[2].controller, 3);
}

TEST(FunctionDocument, AFrequencyOrWidthThatIsNoneIsReportedWithItsPlace) {
    const TemporaryFolder folder;
    constexpr struct {
        const char* name;
        const char* place;
        std::string Function::*text;
    } kRows[] = {{"frequency", "f:2:1: <frequency>: ", &Function::frequency},
                 {"width", "f:3:1: <width>: ", &Function::width}};
    for (const auto& [name, place, member] : kRows) {
        const std::string expected = std::string("expected a ") + name + " above 0, found ";
        for (const auto& [text, told] : {std::pair{"440", std::string()},
                                         {"0", expected + "\"0\""},
                                         {"-3", expected + "\"-3\""},
                                         {"nan", expected + "\"nan\""},
                                         {"1e99", expected + "\"1e99\""},
                                         {"", expected + "\"\""},
                                         {"220 Hz", "which counts as 220"}}) {
            Function start;
            start.*member = text;
            const auto path = folder.Write(
                "f", "<vexasamplefunction><info><author></author></info><samplefile>a</"
                     "samplefile>\n<frequency>" +
                         start.frequency + "</frequency><display>\n<width>" + start.width +
                         "</width><linkfunction><x>1</x><y>1</y></linkfunction><linkscreenrel>"
                         "<x>1</x><y>1</y></linkscreenrel></display></vexasamplefunction>");
            Warnings warnings;
            const auto read = ReadFunction(path, Function(), &warnings);
            ASSERT_TRUE(read);
            EXPECT_EQ((*read).*member, text);
            const std::vector<std::string> lines = kits::Texts(warnings);
            ASSERT_EQ(lines.size(), told.empty() ? 0U : 1U) << name << text;
            if (!told.empty()) {
                EXPECT_THAT(lines[0], testing::AllOf(HasSubstr(place), HasSubstr(told)));
            }
        }
    }
}

TEST(FunctionDocument, WhatIsMissingStaysAndIsReportedWithItsPlace) {
    const TemporaryFolder folder;
    const auto path = folder.Write("f", "<vexafunction><expression>  x </expression><display>\n"
                                        "  <linkfunction><x>7</x></linkfunction><x>8</x>\n"
                                        "</display></vexafunction>\n\xC3\xA4<!-- open");
    const Function start = FullFunction(FunctionKind::Sample);
    Warnings warnings;
    const auto read = ReadFunction(path, start, &warnings);
    ASSERT_TRUE(read);
    Function expected = start;
    expected.kind = FunctionKind::Expression;
    expected.expression = "x";
    expected.linkFunction.x = "7";
    expected.kept = {};
    expected.macros = Function().macros;
    EXPECT_EQ(*read, expected);
    const std::string name = path.string();
    EXPECT_THAT(
        kits::Texts(warnings),
        ElementsAre(name + ":1:1: expected an element <info> in <vexafunction>, found none",
                    name + ":1:44: expected an element <width> in <display>, found none",
                    name + ":1:44: expected an element <linkscreenrel> in <display>, found none",
                    name + ":2:3: expected an element <y> in <linkfunction>, found none",
                    name + ":2:40: expected <width>, <linkfunction> or <linkscreenrel> in "
                           "<display>, found an element <x>",
                    name + ":4:1: a text outside of the root element is not read",
                    name + ":4:2: a comment without \"-->\""));
}

TEST(FunctionDocument, SaysWhyAFileIsNoFunction) {
    const TemporaryFolder folder;
    const auto missing = folder.Path() / "none";
    const auto pipe = folder.Path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto sparse = folder.Write("sparse", "<a>");
    std::filesystem::resize_file(sparse, 100'000'000'000);
    const std::string notLoaded = "Could not load \n";
    const struct {
        std::filesystem::path path;
        std::string alert;
        std::string reason;
    } cases[] = {
        {missing, notLoaded + missing.string(), "none: No such file or directory"},
        {folder.Path(), notLoaded, ": it is a folder, not a file"},
        {pipe, notLoaded + pipe.string(), "pipe: it is a pipe, not a file"},
        {"/dev/zero", notLoaded, "/dev/zero: it is a device, not a file"},
        {sparse, notLoaded, "sparse: it is larger than 64 MB"},
        {folder.Write("empty", ""), notLoaded, "empty: expected a root element, found nothing"},
        {folder.Write("blank", " \n"), notLoaded, "blank:2:1: nothing but blanks"},
        {folder.Write("tag", "\n <vexafunction"), notLoaded, "tag:2:2: a tag without \">\""},
        {folder.Write("binary", std::string("\0\1<\0a>", 6)), notLoaded,
         "binary: expected a root element, found nothing"},
        {folder.Write("utf16", std::string("\xFF\xFE<\0a\0>\0", 8)), notLoaded,
         "utf16: expected a text in UTF-8, found UTF-16"},
        {folder.Write("sound", "<vexasound/><\xE9\x1Bther></other>"), kInvalidFunction,
         "sound:1:13: This is not a valid function. (expected a root element <vexafunction>, "
         "<vexasamplefunction> or <vexapicturefunction>, or <vexasound> for a sound, found "
         "<??ther>)"},
    };
    for (const auto& [path, alert, reason] : cases) {
        const auto read = ReadFunction(path, {});
        ASSERT_FALSE(read) << path;
        EXPECT_THAT(read.Fault().alerts, ElementsAre(HasSubstr(alert)));
        EXPECT_THAT(read.Fault().text, EndsWith(reason));
    }

    const auto written = WriteFunction(missing / "f", {});
    ASSERT_FALSE(written);
    EXPECT_THAT(written.Fault().text, HasSubstr("none/f: No such file or directory"));
}

} // namespace
