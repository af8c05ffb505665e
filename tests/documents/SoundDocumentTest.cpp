#include "documents/SoundDocument.h"

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
using testing::ElementsAre;
using testing::HasSubstr;

/// A sound in which no two texts are the same. Its points have times and values of at most three
/// decimals, which survive being written.
Sound RandomSound(unsigned seed) {
    std::mt19937 random(seed);
    const auto text = [&random] { return std::to_string(random() % 1000000) + "<&>"; };
    Sound sound;
    sound.author = text();
    sound.function.author = text();
    sound.function.kind = random() % 2 ? FunctionKind::Sample : FunctionKind::Expression;
    if (sound.function.kind == FunctionKind::Sample) {
        sound.function.sampleFile = text();
        sound.function.frequency = text();
    } else {
        sound.function.expression = text();
    }
    for (std::string& coefficient : sound.texts)
        coefficient = text();
    for (std::vector<EnvPoint>& points : sound.envelopes) {
        points.resize(random() % 5);
        for (EnvPoint& point : points)
            point = {float(random() % 10000) / 1000, random() % 2 == 0,
                     float(int(random() % 2001) - 1000) / 1000};
    }
    return sound;
}

kits::Result<Sound> Interpreted(std::string_view text, Sound start, Warnings& warnings) {
    MXString given(text);
    const MXDocument document(given);
    if (auto done = InterpretSound(*document.root, start, warnings); !done)
        return done.Fault();
    return start;
}

TEST(SoundDocument, RandomSoundsComeBackByteForByte) {
    const TemporaryFolder folder;
    const auto path = folder.Path() / "s";
    for (unsigned seed = 0; seed < 50; seed++) {
        const Sound written = RandomSound(seed);
        ASSERT_TRUE(WriteSound(path, written));
        const std::string text = Contents(path);
        Sound start = RandomSound(1000 + seed);
        // What a document of the other kind of function does not hold.
        start.function = Function();
        ReadReport report;
        const auto read = ReadSound(path, start, report);
        ASSERT_TRUE(read) << report.reason;
        EXPECT_EQ(*read, written) << "seed " << seed;
        EXPECT_THAT(report.warnings, ElementsAre());
        ASSERT_TRUE(WriteSound(path, *read));
        EXPECT_EQ(Contents(path), text);
    }
}

TEST(SoundDocument, LooksElementsUpByNameWhereverTheyStand) {
    Warnings warnings;
    const auto sound = Interpreted(
        "<any><fy>6</fy><fx>5</fx><vexasamplefunction><info><author>F</author></info>"
        "<samplefile>loop.wav</samplefile></vexasamplefunction>"
        "<ax><vel>3</vel><deeper><envdata><e><envpoint t=\"1\" val=\"0.5\" fku=\"true\"/></e>"
        "<envpoint t=\"2\"/><envpoint t=\"1\" val=\"1\" fku=\"TRUE\"/>"
        "<envpoint t=\"3\" val=\"3\"></envpoint></envdata></deeper><vel>4</vel></ax>"
        "<ax><vel>9</vel></ax><info><author>S</author></info><fx>9</fx>"
        "<vexafunction><expression>y</expression></vexafunction></any>",
        RandomSound(1), warnings);
    ASSERT_TRUE(sound);
    const Sound before = RandomSound(1);
    EXPECT_EQ(sound->function.kind, FunctionKind::Expression) << "this kind is looked for first";
    EXPECT_EQ(sound->function.expression, "y");
    EXPECT_EQ(sound->author, "F") << "the first info of the document";
    EXPECT_EQ(sound->function.author, before.function.author) << "its function has no info";
    EXPECT_EQ(sound->texts[11], "3");
    EXPECT_EQ(sound->texts[10], before.texts[10]);
    EXPECT_EQ(sound->texts[30], "5");
    EXPECT_EQ(sound->texts[31], "6");
    EXPECT_THAT(sound->envelopes[2],
                ElementsAre(EnvPoint{1, true, 0.5F}, EnvPoint{2, false, 0}, EnvPoint{1, false, 1}))
        << "in the order of the document; an element with an end tag is no point";
    EXPECT_EQ(sound->envelopes[0], before.envelopes[0]);
    EXPECT_THAT(warnings, Contains(HasSubstr("no element \"dcxdt\" in \"any\"")));
    EXPECT_THAT(warnings, Contains(HasSubstr("no element \"env\" in \"ax\"")));
    EXPECT_THAT(warnings, Not(Contains(HasSubstr("in \"dcxdt\""))))
        << "a missing group is reported once";
}

TEST(SoundDocument, PointsThatAreNotFiniteAreZeroAndReported) {
    Warnings warnings;
    const auto sound = Interpreted(
        "<vexasound><vexafunction></vexafunction><ay><envdata><envpoint t=\"0.25x\" val=\"1\"/>"
        "<envpoint t=\"nan\" val=\"-inf\"/><envpoint t=\"1\" val=\"1e300\"/></envdata></ay>"
        "</vexasound>",
        {}, warnings);
    ASSERT_TRUE(sound);
    EXPECT_THAT(sound->envelopes[3],
                ElementsAre(EnvPoint{0.25F, false, 1}, EnvPoint{}, EnvPoint{1, false, 0}));
    EXPECT_THAT(warnings, Contains("\"envdata\" in \"ay\": 3 numbers are not finite and read as 0 "
                                   "(point 2, t=\"nan\")"));
}

TEST(SoundDocument, WithoutAFunctionNothingIsTaken) {
    const TemporaryFolder folder;
    const auto path = folder.Write("s", "<vexasound><info><author>S</author></info>"
                                        "<vexafunction/><fx>2</fx></vexasound>");
    ReadReport report;
    const auto read = ReadSound(path, {}, report);
    ASSERT_FALSE(read);
    EXPECT_EQ(read.Fault().text, "This is not a valid function.");
    EXPECT_THAT(report.reason, HasSubstr(path.string()));

    MXString text("<vexasound><fx>2</fx></vexasound>");
    const MXDocument document(text);
    Sound sound = RandomSound(2);
    Warnings warnings;
    EXPECT_FALSE(InterpretSound(*document.root, sound, warnings));
    EXPECT_EQ(sound, RandomSound(2));
}

TEST(SoundDocument, AFunctionDocumentIsASoundThatLacksTheRest) {
    const TemporaryFolder folder;
    const auto path = folder.Path() / "f";
    Function function;
    function.author = "F";
    ASSERT_TRUE(WriteFunction(path, function));
    ReadReport report;
    const auto read = ReadSound(path, RandomSound(3), report);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->function.author, "F");
    EXPECT_EQ(read->author, "F");
    EXPECT_EQ(read->texts, RandomSound(3).texts);
    EXPECT_EQ(report.warnings.size(), 8U) << "one for each group";
}

} // namespace
