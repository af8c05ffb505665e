// SPDX-License-Identifier: GPL-3.0-or-later
#include "documents/SoundDocument.h"

#include "documents/ApplySound.h"
#include "documents/FunctionDocument.h"
#include "support/TemporaryFolder.h"
#include "synth/ParameterTable.h"

#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace vexa;
using test::Contents;
using test::TemporaryFolder;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

/// A sound in which no two texts are the same, and which keeps elements of others. Its points have
/// times and values of at most three decimals, which survive being written.
Sound RandomSound(unsigned seed) {
    std::mt19937 random(seed);
    const auto text = [&random] { return std::to_string(random() % 1000000) + "<&>"; };
    Sound sound;
    sound.author = text();
    sound.function.author = text();
    sound.function.kind = kFunctionElements[random() % 3].kind;
    if (sound.function.kind == FunctionKind::Sample) {
        sound.function.sampleFile = text();
        sound.function.frequency = std::to_string(random());
    } else if (sound.function.kind == FunctionKind::Picture) {
        sound.function.pictureFile = text();
    } else {
        sound.function.expression = text();
    }
    sound.kept = {"<later><mode>" + std::to_string(seed) + "</mode></later><b/>", "<c></c>"};
    for (auto* said : {&sound.info.name, &sound.info.tags, &sound.info.comment}) {
        if (random() % 2)
            *said = text();
    }
    if (random() % 2)
        sound.info.category = kCategories[random() % std::size(kCategories)];
    if (random() % 4) {
        PlayingTexts& playing = sound.playing.emplace();
        for (std::size_t i = 0; i < playing.texts.size(); i++) {
            const PlayingRow& row = PlayingRows()[i];
            if (random() % 2)
                playing.texts[i] = row.words.empty()
                                       ? std::to_string(int(row.minimum) + int(random() % 6))
                                       : std::string(row.words[random() % row.words.size()]);
        }
        playing.kept = random() % 2 ? "<later><glide>9</glide></later>" : "";
    }
    sound.function.kept = {"<d><e>x<!-- y --><f/></e></d>", "<g h=\"i\"><![CDATA[<]]></g>"};
    for (std::size_t i = 0; i < sound.texts.size(); i++)
        sound.texts[i] = std::to_string(Parameters()[i].controller ? random() % 128 : random());
    for (std::vector<EnvPoint>& points : sound.envelopes) {
        points.resize(random() % 5);
        for (EnvPoint& point : points)
            point = {float(random() % 10000) / 1000, random() % 2 == 0,
                     float(int(random() % 2001) - 1000) / 1000};
    }
    return sound;
}

/// Returns the sound of a document, and the remarks on it as those of a file "s".
Sound Interpreted(std::string_view text, std::vector<std::string>& lines, Sound sound = {}) {
    MXString given(text);
    Remarks remarks;
    const MXDocument document(given, &remarks);
    EXPECT_TRUE(InterpretSound(*document.root, sound, remarks));
    lines = kits::Texts(remarks.Located("s", text));
    return sound;
}

TEST(SoundDocument, RandomSoundsComeBackByteForByte) {
    const TemporaryFolder folder;
    const auto path = folder.Path() / "s";
    for (unsigned seed = 0; seed < 50; seed++) {
        const Sound written = RandomSound(seed);
        ASSERT_TRUE(WriteSound(path, written));
        const std::string text = Contents(path);
        Warnings warnings;
        const auto read = ReadSound(path, &warnings);
        ASSERT_TRUE(read) << read.Fault().text;
        EXPECT_EQ(*read, written) << "seed " << seed;
        const bool hasMore = written.playing && !written.playing->kept.empty();
        EXPECT_THAT(kits::Texts(warnings), Each(HasSubstr(", found an element <")));
        EXPECT_EQ(warnings.size(), hasMore ? 6U : 5U) << "one for each unknown element";
        ASSERT_TRUE(WriteSound(path, *read));
        EXPECT_EQ(Contents(path), text);
    }
}

TEST(SoundDocument, LooksElementsUpByNameWhereverTheyStand) {
    std::vector<std::string> lines;
    const Sound sound = Interpreted(
        "<any><fy>6</fy><fx>5</fx><vexasamplefunction><info><author>F</author></info>"
        "<samplefile>loop.wav</samplefile></vexasamplefunction>"
        "<ax><vel>3</vel><deeper><envdata><e><envpoint t=\"1\" val=\"0.5\" fku=\"true\"/></e>"
        "<envpoint t=\"2\"/><envpoint t=\"1\" val=\"1\" fku=\"TRUE\"/>"
        "<envpoint t=\"3\" val=\"3\"></envpoint></envdata></deeper><vel>4</vel></ax>"
        "<ax><vel>9</vel></ax><info><author>S</author></info><fx>9</fx>"
        "<vexafunction><expression>y</expression></vexafunction></any>",
        lines, RandomSound(1));
    const Sound before = RandomSound(1);
    EXPECT_EQ(sound.function.kind, FunctionKind::Expression) << "this kind is looked for first";
    EXPECT_EQ(sound.function.expression, "y");
    EXPECT_EQ(sound.author, "F") << "the first info of the document";
    EXPECT_EQ(sound.function.author, before.function.author) << "its function has no info";
    EXPECT_EQ(sound.texts[11], "3");
    EXPECT_EQ(sound.texts[10], before.texts[10]);
    EXPECT_EQ(sound.texts[30], "5");
    EXPECT_EQ(sound.texts[31], "6");
    EXPECT_THAT(sound.envelopes[2],
                ElementsAre(EnvPoint{1, true, 0.5F}, EnvPoint{2, false, 0}, EnvPoint{1, false, 1}))
        << "in the order of the document; an element with an end tag is no point";
    EXPECT_EQ(sound.envelopes[0], before.envelopes[0]);
    EXPECT_THAT(lines, Contains("s:1:1: expected an element <dcxdt> in <any>, found none"));
    EXPECT_THAT(lines, Contains(HasSubstr("<env> in <ax>")));
    EXPECT_THAT(lines, Not(Contains(HasSubstr("in <dcxdt>"))))
        << "a missing group is reported once";
}

/// Values that are hardly intended: each is read in the usual way, but with a warning.
TEST(SoundDocument, TellsTheLineAndColumnOfWhatIsMalformed) {
    const struct {
        /// Replaces the group "ay".
        const char* group;
        std::vector<std::string> expected;
    } cases[] = {
        {"<envdata><envpoint t='0' val=\"1\" fku=\"true\"/></envdata>",
         {"s:2:24: expected a double quote, found \"'0' val=\"1\" fku=\"true\"\"",
          "s:2:12: <envpoint>: expected t=\"SECONDS\"; expected val=\"VALUE\"; expected "
          "fku=\"true\" or \"false\""}},
        {"<envdata><envpoint t = \"0\" val=\"1\" fku=\"true\"/></envdata>",
         {"s:2:22: expected the name of an attribute right before \"=\", found \"t \"",
          "s:2:12: <envpoint>: expected t=\"SECONDS\""}},
        {"<envdata><envpoint t=\"0\" val=\"1\" fku=\"true\"></envpoint></envdata>",
         {"s:2:12: <envpoint>: expected an element that ends in \"/>\"; this one is not read"}},
        {"<envdata><envpoint t=\"abc\" val=\"0,003\" fku=\"no\"/></envdata>",
         {"s:2:12: <envpoint>: t: expected a number, found \"abc\", which counts as 0; val: "
          "expected a number, found \"0,003\", which counts as 0 (the decimal point is \".\"); "
          "fku: expected \"true\" or \"false\", found \"no\", which counts as \"false\""}},
        {"<envdata><envpoint t=\"nan\" val=\"1e300\" fku=\"true\"/></envdata>",
         {"s:2:12: <envpoint>: t: \"nan\" is not finite and counts as 0; val: \"1e300\" is not "
          "finite and counts as 0"}},
        {"<envdata><envpoint t=\"1 val=\"1\" fku></envdata>",
         {"s:2:32: expected NAME=\"VALUE\", found \"1\" fku\"",
          "s:2:39: expected </envpoint>, found \"</envdata\""}},
        {"<env>abc</env><vel>0.5 <key>0</key>",
         {"s:2:3: <env>: expected a number, found \"abc\", which counts as 0",
          "s:2:26: expected a text in <vel>, found an element <key>; an end tag may be missing",
          "s:2:38: expected </vel>, found \"</ay\""}},
        {"<env>1</evn>", {"s:2:9: expected </env>, found \"</evn\""}},
        {"<env>1</env><!-- open", {"s:2:15: expected </ay>, found a comment without \"-->\""}},
        {"<env><![CDATA[1]]></env>",
         {"s:2:8: expected a text in <env>, found a CDATA section, which is not read",
          "s:2:3: <env>: expected a number, found nothing, which counts as 0"}},
        {"<env>&#49;</env><vel>&quot;</vel>",
         {"s:2:8: the reference \"&#49;\" stays as it is written; only &lt; and &amp; are resolved",
          "s:2:24: the reference \"&quot;\" stays as it is written; only &lt; and &amp; are "
          "resolved"}},
        {"<ctlnum>200</ctlnum><env>nan</env>",
         {"s:2:3: <ctlnum>: \"200\": Controller number must be between 0 and 127.",
          "s:2:23: <env>: \"nan\" is not a number and changes nothing"}},
        {"<envdata><envpoint t=\"0\" val=\"1\" fku=\"true\" curve=\"2\"/><evnpoint/>no</envdata>",
         {"s:2:12: <envpoint>: expected t, val or fku, found \"curve\"",
          "s:2:58: expected <envpoint> in <envdata>, found an element <evnpoint>",
          "s:2:69: expected <envpoint> in <envdata>, found the text \"no\""}},
        {"<env/>",
         {"s:2:3: <env>: expected an element with an end tag; one that ends in \"/>\" counts as "
          "missing"}},
        {"<env value=\"2\">1</env>", {"s:2:3: <env>: attributes are not read here"}},
        {"< env>1</env>", {"s:2:3: expected the name of an element, found \"\""}},
    };
    for (const auto& [group, expected] : cases) {
        std::vector<std::string> lines;
        Interpreted("<vexasound><vexafunction></vexafunction><ay>\n  " + std::string(group) +
                        "</ay>\n</vexasound>",
                    lines);
        for (const std::string& line : expected)
            EXPECT_THAT(lines, Contains(line)) << group;
    }
}

TEST(SoundDocument, WhatPlayingCannotBeIsToldWithItsPlaceAndCountsAsAbsent) {
    std::string text = "<vexasound><info><category>Pad</category></info><vexafunction>"
                       "</vexafunction>\n<playing>";
    const struct {
        const char* name;
        const char* below;
        const char* beyond;
        const char* allowed;
    } rows[] = {
        {"polyphony", "0", "21", "a whole number from 1 to 20"},
        {"mode", "Mono", "3", "poly, mono or legato"},
        {"glide", "-0.1", "5.01", "a number from 0 to 5"},
        {"bend", "-1", "48.5", "a number from 0 to 48"},
        {"pedal", "yes", "1", "true or false"},
        {"pressure", "-1", "12.5", "a whole number from 0 to 127"},
        {"spread", "-1", "181", "a number from 0 to 180"},
        {"oversample", "3", "32", "1, 2, 4, 8 or 16"},
        {"smooth", "nan", "101", "a number from 0 to 100"},
        {"volume", "-41", "0,5", "a number from -40 to 12"},
    };
    ASSERT_EQ(std::size(rows), PlayingRows().size());
    const Playing absent;
    for (const bool beyond : {false, true}) {
        std::string wrong = text;
        std::vector<std::string> expected;
        for (const auto& row : rows) {
            const std::string value = beyond ? row.beyond : row.below;
            wrong += "\n<" + std::string(row.name) + '>' + value + "</" + row.name + '>';
            expected.push_back("s:" + std::to_string(3 + expected.size()) + ":1: <" + row.name +
                               ">: expected " + row.allowed + ", found \"" + value +
                               "\", which counts as if it were not there");
        }
        std::vector<std::string> lines;
        const Sound sound = Interpreted(wrong + "</playing></vexasound>", lines);
        for (const std::string& line : expected)
            EXPECT_THAT(lines, Contains(line));
        EXPECT_THAT(lines, Contains(HasSubstr("s:1:18: <category>: expected one of bass, lead")));
        Playing playing;
        ApplyPlaying(sound, {}, playing);
        EXPECT_TRUE(playing.given);
        for (const PlayingRow& row : PlayingRows())
            EXPECT_EQ(playing.*row.target, absent.*row.target) << row.name;
    }
}

/// A misspelt name would otherwise be a setting that changes nothing, without a word; so would one
/// that is there already.
TEST(SoundDocument, WhatIsNotReadIsToldOnceWithItsPlaceAndWhatWasExpected) {
    std::vector<std::string> lines;
    const Sound sound = Interpreted("<vexasound>\n"
                                    "<info><autor>A</autor><tags>x</tags></info>\n"
                                    "<vexafunction><info><comment>C</comment><Name>N</Name></info>"
                                    "<expression>x</expression><samplefile>s</samplefile>\n"
                                    "<display><with>1</with><linkfunction><X>1</X></linkfunction>"
                                    "</display>\n<macros><a>1</a><e>1</e><b/></macros>"
                                    "</vexafunction>\n"
                                    "<cx0><env>1</env></cx0>\n<az/>no<!-- text --><fx>1</fx>\n"
                                    "<fx>2</fx><fy/><fy>3</fy><vexasamplefunction/><![CDATA[x]]>\n"
                                    "<playing><Bend>2</Bend><bend>3</bend></playing>\n"
                                    "<playing2></playing2></vexasound>",
                                    lines);
    std::erase_if(lines, [](const std::string& line) { return line.ends_with(", found none"); });
    const std::string info = "expected <vexaversion>, <author>, <name>, <category>, <tags> or "
                             "<comment> in <info>, found an element ";
    const std::string root =
        "expected <dcxdt>, <dcydt>, <ax>, <ay>, <cx0>, <cy0>, <fx>, <fy>, <info>, <vexafunction>, "
        "<vexasamplefunction>, <vexapicturefunction> or <playing> in <vexasound>, found ";
    const std::string another = "expected one element <";
    EXPECT_THAT(
        lines,
        ElementsAre(
            "s:2:7: " + info + "<autor>", "s:3:41: " + info + "<Name>",
            "s:3:88: expected <info>, <expression>, <display> or <macros> in "
            "<vexafunction>, found an element <samplefile>",
            "s:4:10: expected <width>, <linkfunction> or <linkscreenrel> in <display>, "
            "found an element <with>",
            "s:4:38: expected <x> or <y> in <linkfunction>, found an element <X>",
            "s:5:17: expected <a>, <actl>, <b>, <bctl>, <c>, <cctl>, <d> or <dctl> in "
            "<macros>, found an element <e>",
            "s:5:25: <b>: expected an element with an end tag; one that ends in \"/>\" "
            "counts as missing",
            "s:6:6: expected <one>, <vel>, <key>, <ctl> or <ctlnum> in <cx0>, found an "
            "element <env>",
            "s:7:1: " + root + "an element <az>", "s:7:6: " + root + "the text \"no\"",
            "s:8:1: " + another + "fx> in <vexasound>, found another, which is not read",
            "s:8:16: " + another + "fy> in <vexasound>, found another",
            "s:8:26: " + another +
                "vexafunction>, <vexasamplefunction> or "
                "<vexapicturefunction> in <vexasound>, found also <vexasamplefunction>, which "
                "is not read",
            "s:8:47: " + root + "a CDATA section",
            "s:9:10: expected <polyphony>, <mode>, <glide>, <bend>, <pedal>, <pressure>, "
            "<spread>, <oversample>, <smooth> or <volume> in <playing>, found an element "
            "<Bend>",
            "s:10:1: " + root + "an element <playing2>"));
    EXPECT_EQ(sound.texts[30], "1");
    EXPECT_EQ(sound.texts[31], "3");
    EXPECT_EQ(sound.playing->Of("bend"), "3");
}

TEST(SoundDocument, PlayingBelongsToTheSoundAloneAndMayBeEmpty) {
    std::vector<std::string> lines;
    const Sound sound = Interpreted("<vexasound><vexafunction><playing><bend>2</bend></playing>"
                                    "</vexafunction><later><playing/></later></vexasound>",
                                    lines);
    EXPECT_FALSE(sound.playing) << "a function's and a later version's are theirs";
    const Sound empty =
        Interpreted("<vexasound><vexafunction></vexafunction><playing/></vexasound>", lines);
    EXPECT_EQ(empty.playing, PlayingTexts());
    Playing playing;
    ApplyPlaying(empty, {}, playing);
    EXPECT_TRUE(playing.given);
    PlayingTexts choice;
    choice.Of("bend") = "7";
    ApplyPlaying(sound, choice, playing);
    EXPECT_TRUE(playing.given) << "a choice is as if the sound had it";
    EXPECT_EQ(playing.bend, 7);
    ApplyPlaying(sound, {}, playing);
    EXPECT_FALSE(playing.given);
    PlayingTexts finer;
    finer.Of("oversample") = "4";
    ApplyPlaying(sound, finer, playing);
    EXPECT_EQ(playing.Oversampling(), 4);
    EXPECT_FALSE(playing.given) << "how finely is not how";
    EXPECT_EQ(playing.bend, 0) << "all is absent after every load";
}

TEST(SoundDocument, ManyFaultsAreCountedAndANewerVersionIsTold) {
    std::vector<std::string> lines;
    std::string points;
    for (int i = 0; i < 300; i++)
        points += "<envpoint/>\n";
    Interpreted("<vexasound><info><vexaversion>0.10 alpha</vexaversion></info>"
                "<vexafunction></vexafunction><ay><envdata>" +
                    points + "</envdata></ay></vexasound>",
                lines);
    ASSERT_EQ(lines.size(), Remarks::kMost + 1);
    EXPECT_THAT(lines.back(), HasSubstr("more like these"));

    for (const char* version : {"0.2.0", "0.1.9", "0.2.0 beta", "", "new"}) {
        Interpreted("<vexasound><info><vexaversion>" + std::string(version) +
                        "</vexaversion></info><vexafunction></vexafunction></vexasound>",
                    lines);
        EXPECT_THAT(lines, Not(Contains(HasSubstr("newer")))) << version;
    }
    Interpreted("<vexasound><info><vexaversion>0.10 alpha</vexaversion></info>"
                "<vexafunction></vexafunction></vexasound>",
                lines);
    EXPECT_THAT(lines, Contains(HasSubstr("s:1:18: saved by Vexa 0.10 alpha, which is newer")));
}

TEST(SoundDocument, WithoutAFunctionNothingIsTaken) {
    const TemporaryFolder folder;
    const auto path = folder.Write("s", "<vexasound><info><author>S</author></info>"
                                        "<vexafunction/><fx>2</fx></vexasound>");
    Warnings warnings;
    const auto read = ReadSound(path, &warnings);
    ASSERT_FALSE(read);
    EXPECT_THAT(read.Fault().alerts, ElementsAre("This is not a valid sound."));
    EXPECT_EQ(read.Fault().place, (kits::Place{path.string(), 1, 1}));
    EXPECT_EQ(read.Fault().text,
              path.string() + ":1:1: This is not a valid sound. (expected an element "
                              "<vexafunction>, <vexasamplefunction> or <vexapicturefunction> in "
                              "<vexasound>)");

    MXString text("<vexasound><fx>2</fx></vexasound>");
    const MXDocument document(text);
    Sound sound = RandomSound(2);
    Remarks remarks;
    EXPECT_FALSE(InterpretSound(*document.root, sound, remarks));
    EXPECT_EQ(sound, RandomSound(2));
}

TEST(SoundDocument, WhatADocumentLacksIsThatOfANewSound) {
    std::vector<std::string> lines;
    Sound expected;
    expected.function.expression = "y";
    EXPECT_EQ(Interpreted("<vexasound><vexafunction><expression>y</expression></vexafunction>"
                          "</vexasound>",
                          lines),
              expected);
    EXPECT_THAT(lines, SizeIs(11)) << "a remark on each part";
}

} // namespace
