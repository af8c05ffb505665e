// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/Instrument.h"

#include "functions/ProgramFolder.h"
#include "instrument/PlaneFollower.h"
#include "support/Environment.h"
#include "support/Pictures.h"
#include "support/SoundFiles.h"
#include "support/Sounds.h"
#include "support/TemporaryFolder.h"

#include <chrono>
#include <memory>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using vexa::Addons;
using vexa::Function;
using vexa::FunctionReport;
using vexa::Instrument;

Function Of(const std::string& expression) {
    Function function;
    function.expression = expression;
    return function;
}

/// Returns a sound whose notes circle around the origin.
vexa::Sound WithCircles() {
    vexa::Sound sound;
    sound.envelopes[2] = sound.envelopes[3] = {{0, false, 0}, {0.01F, false, 1}, {0.05F, true, 0}};
    return sound;
}

/// Returns the result of the add-on.
FunctionReport Await(Instrument& instrument) {
    while (instrument.Compiling()) {
        if (FunctionReport report = instrument.Collect(); !report)
            return report;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return {};
}

/// Returns the level of a note with the function that plays.
float PeakOfANote(Instrument& instrument) {
    vexa::Engine& engine = instrument.Engine();
    instrument.LoadRest(WithCircles());
    engine.renderer.SetGain(1);
    engine.consumer.AllNotesOff(false, 0);
    engine.consumer.NoteOn(0, 60, 127, 0);
    return test::Peak(test::Render(engine, 4410));
}

/// Add-ons of this template are louder than the formula, which shows which of them plays.
const std::string kLoud = "const char* r2rfunstr(void) { return EXPRESSION_STR; }\n"
                          "float r2rfun(float x, float y) { return 3 * (EXPRESSION); }\n";

TEST(Instrument, IsPlayedAsTheSoundSaysUnlessAPersonHasChosen) {
    const test::ProgramFolder folder;
    Instrument instrument(folder.Path(), Addons::None);
    vexa::Sound many;
    many.playing.emplace().Of("polyphony") = "12";
    instrument.Load(many);
    EXPECT_EQ(instrument.VoiceLimit(), 12);
    instrument.Load(vexa::Sound());
    EXPECT_EQ(instrument.VoiceLimit(), 1) << "absent after every load";
    instrument.SetUsualVoices(20);
    EXPECT_EQ(instrument.VoiceLimit(), 20);
    instrument.Load(many);
    EXPECT_EQ(instrument.VoiceLimit(), 12);
    for (uchar note = 40; note < 52; note++)
        instrument.Engine().consumer.NoteOn(0, note, 100, 0);
    vexa::Sound few;
    few.playing.emplace().Of("polyphony") = "8";
    instrument.Load(few);
    vexa::VexaMidiConsumer& consumer = instrument.Engine().consumer;
    EXPECT_EQ(consumer.CountHeld(), 12) << "nobody has let them go";
    for (uchar note = 40; note < 50; note++)
        consumer.NoteOff(0, note, 0, 0);
    EXPECT_EQ(consumer.CountVox(), 12) << "they sound out";
    for (uchar note = 60; note < 70; note++)
        consumer.NoteOn(0, note, 100, 0);
    EXPECT_EQ(consumer.CountVox(), 8);
    consumer.AllNotesOff(false, 0);
    vexa::PlayingTexts options;
    options.Of("bend") = "7";
    instrument.Prefer(options);
    EXPECT_EQ(instrument.Engine().playing.bend, 7);
    instrument.ChooseVoices(3);
    instrument.Load(many);
    EXPECT_EQ(instrument.Engine().playing.bend, 7);
    EXPECT_EQ(instrument.State(), many) << "what is chosen does not get into the sound";
    for (uchar note = 40; note < 60; note++)
        instrument.Engine().consumer.NoteOn(0, note, 100, 0);
    EXPECT_EQ(instrument.Engine().consumer.CountVox(), 3);
}

TEST(Instrument, HowItIsPlayedIsEditedWhileItPlays) {
    const test::ProgramFolder folder;
    Instrument instrument(folder.Path(), Addons::None);
    vexa::Sound plain;
    plain.author = "somebody";
    instrument.Load(plain);
    vexa::Engine& engine = instrument.Engine();
    const auto edit = [&](const char* row, const char* text) {
        const uint64 before = instrument.Changes();
        const bool taken = instrument.EditPlaying(vexa::PlayingRowNamed(row), text);
        EXPECT_EQ(instrument.Changes() != before, taken);
        return taken;
    };
    engine.consumer.NoteOn(0, 60, 100, 0);
    engine.consumer.PitchBend(0, 0, 96, 0);
    EXPECT_EQ(engine.voices[0].bend, 0);
    EXPECT_FALSE(edit("bend", "49"));
    EXPECT_FALSE(edit("mode", "both"));
    EXPECT_EQ(instrument.State(), plain);
    EXPECT_TRUE(edit("bend", "12"));
    engine.consumer.NoteOn(0, 61, 100, 0);
    engine.consumer.PitchBend(0, 0, 96, 0);
    EXPECT_NEAR(engine.voices[0].bend, 6, 0.001) << "the wheel, from now on";
    ASSERT_TRUE(instrument.State().playing);
    EXPECT_EQ(instrument.State().playing->Of("bend"), "12");
    EXPECT_EQ(instrument.State().playing->Of("spread"), std::nullopt);
    EXPECT_EQ(instrument.State().author, vexa::kDefaultAuthor);
    instrument.SetUser("Anna");
    EXPECT_TRUE(edit("bend", "12"));
    EXPECT_EQ(instrument.State().author, vexa::kDefaultAuthor) << "confirmed as it is";

    EXPECT_TRUE(edit("pedal", "true"));
    EXPECT_EQ(instrument.State().author, "Anna");
    engine.consumer.ControlChange(0, 64, 127, 0);
    engine.consumer.NoteOff(0, 61, 0, 0);
    EXPECT_EQ(engine.consumer.CountHeld(), 1);
    const uint32 loads = engine.playing.loads;
    EXPECT_TRUE(edit("spread", " 40 "));
    EXPECT_EQ(engine.playing.spread, 40);
    EXPECT_EQ(engine.playing.loads, loads) << "hands go on as they were";
    vexa::Sound next = instrument.State();
    next.playing->Of("pedal") = "false";
    instrument.Change(instrument.State(), next);
    EXPECT_EQ(instrument.State(), next);
    engine.consumer.PitchBend(0, 0, 64, 0);
    EXPECT_EQ(engine.consumer.CountHeld(), 0) << "no pedal will let it go";

    instrument.ChooseVoices(3);
    EXPECT_TRUE(edit("polyphony", "5"));
    for (uchar note = 40; note < 60; note++)
        engine.consumer.NoteOn(0, note, 100, 0);
    EXPECT_EQ(engine.consumer.CountVox(), 5);
    EXPECT_TRUE(edit("polyphony", "2"));
    EXPECT_EQ(engine.consumer.CountHeld(), 5) << "nobody has let them go";
    engine.consumer.NoteOn(0, 70, 100, 0);
    EXPECT_EQ(engine.consumer.CountHeld(), 5);
    for (uchar note = 40; note < 71; note++)
        engine.consumer.NoteOff(0, note, 0, 0);
    EXPECT_EQ(engine.consumer.CountVox(), 5) << "they sound out";
    for (uchar note = 71; note < 75; note++)
        engine.consumer.NoteOn(0, note, 100, 0);
    EXPECT_EQ(engine.consumer.CountVox(), 2);
    vexa::PlayingTexts options;
    options.Of("glide") = "0.5";
    instrument.Prefer(options);
    EXPECT_TRUE(edit("glide", "2"));
    EXPECT_EQ(engine.playing.glide, 0.5F) << "the player's stands before";
    EXPECT_EQ(instrument.State().playing->Of("glide"), "2");
    EXPECT_TRUE(instrument.EditPlaying(vexa::PlayingRowNamed("spread"), std::nullopt));
    EXPECT_EQ(engine.playing.spread, 0);
    EXPECT_EQ(instrument.State().playing->Of("spread"), std::nullopt);
}

TEST(Instrument, AFormulaPlaysAtOnceAndAnAddonFollows) {
    const test::ProgramFolder folder;
    folder.WriteTemplate(kLoud);
    Instrument formula(folder.Path(), Addons::None);
    ASSERT_TRUE(formula.SetFunction(Of("x")));
    const float quiet = PeakOfANote(formula);
    EXPECT_GT(quiet, 0);
    EXPECT_EQ(folder.Files(), (std::set<std::string>{"addon.c"})) << "no compiler was started";

    Instrument following(folder.Path(), Addons::Following);
    int shown = 0;
    following.Watch([&](const vexa::PlaneFunction& f) { shown += f(2, 0) == 2; });
    ASSERT_TRUE(following.SetFunction(Of("x")));
    EXPECT_TRUE(following.Compiling());
    EXPECT_EQ(PeakOfANote(following), quiet);
    EXPECT_TRUE(Await(following));
    EXPECT_NEAR(PeakOfANote(following), 3 * quiet, 1e-4 * quiet);
    EXPECT_EQ(shown, 1);
    following.Watch({});

    Instrument awaited(folder.Path(), Addons::Awaited);
    ASSERT_TRUE(awaited.SetFunction(Of("x")));
    EXPECT_NEAR(PeakOfANote(awaited), 3 * quiet, 1e-4 * quiet);

    // An add-on that has become obsolete is not installed; the latest is.
    for (const char* text : {"x", "2*x", "y", "x"})
        ASSERT_TRUE(following.SetFunction(Of(text)));
    EXPECT_EQ(PeakOfANote(following), quiet);
    EXPECT_TRUE(Await(following));
    EXPECT_NEAR(PeakOfANote(following), 3 * quiet, 1e-4 * quiet);
    ASSERT_TRUE(following.SetFunction(Of("x")));
    following.Silence();
    EXPECT_FALSE(following.Compiling());
    // Note inputs, macros and values that C leaves undefined exist in formulas only.
    for (const char* text :
         {"x*vel", "a*x", "x*((int)x/(int)y)", "(char)(1e10*x)/128.0", "x*lrint(1e19*y)",
          "x*(unsigned)1e10", "x*(1<<(y>0))", "x*(1<<32)", "x*(1>>-1)"}) {
        EXPECT_TRUE(following.SetFunction(Of(text))) << text;
        EXPECT_FALSE(following.Compiling()) << text;
        EXPECT_TRUE(awaited.SetFunction(Of(text))) << text;
    }
    EXPECT_TRUE(following.SetFunction(Of("x*((x>0)<<31)+(float)(1L<<63)+(char)300")));
    EXPECT_TRUE(following.Compiling());
}

/// Held notes, and one that has come to rest, continue unchanged.
TEST(Instrument, TheAddonTakesOverWithoutAClick) {
    const test::ProgramFolder folder;
    Instrument formula(folder.Path(), Addons::None);
    Instrument following(folder.Path(), Addons::Following);
    const auto inBoth = [&](const auto& act) {
        act(formula);
        act(following);
    };
    float difference = 0, peak = 0;
    const auto play = [&](std::size_t count) {
        const std::vector<float> should = test::Render(formula.Engine(), count);
        const std::vector<float> is = test::Render(following.Engine(), count);
        for (std::size_t i = 0; i < count; i++)
            difference = std::max(difference, std::abs(is[i] - should[i]));
        peak = test::Peak(should);
    };
    inBoth([](Instrument& instrument) {
        ASSERT_TRUE(instrument.SetFunction(Of("sinf(3*x)*cosf(2*y)+expf(-x*x-y*y)")));
        instrument.LoadRest(WithCircles());
        vexa::Engine& engine = instrument.Engine();
        engine.renderer.SetGain(1);
        engine.consumer.ReduceToMaxVox(20);
        engine.consumer.NoteOn(0, 30, 127, 0);
        engine.consumer.NoteOff(0, 30, 0, 0);
    });
    play(44100);
    inBoth([](Instrument& instrument) {
        for (uchar note = 40; note < 59; note++)
            instrument.Engine().consumer.NoteOn(0, note, uchar(2 * note), 0);
    });
    play(10007);
    EXPECT_EQ(difference, 0) << "the same formula so far";
    EXPECT_TRUE(Await(following));
    play(44100);
    EXPECT_GT(peak, 1);
    EXPECT_GT(difference, 0) << "roundings show that another plays";
    // The level of 19 voices, which exceed 1 together.
    EXPECT_LE(difference, 1e-6 * std::max(peak, 1.0F));
    RecordProperty("difference", std::to_string(1e9 * double(difference)) + "e-9");
}

/// An orbit near 0 on one terrain, or one that has drifted far over it, may lie high on another.
TEST(Instrument, NoOrbitOfOneTerrainIsHeardOnAnother) {
    const test::ProgramFolder folder;
    const auto soundOf = [](const std::string& expression, const std::string& radius,
                            const std::string& drift) {
        vexa::Sound sound = WithCircles();
        sound.function.expression = expression;
        sound.playing.emplace().Of("smooth") = "20";
        for (std::size_t i = 0; i < sound.texts.size(); i++) {
            const std::string_view field = vexa::Parameters()[i].field;
            if (field == "Ax0" || field == "Ay0")
                sound.texts[i] = radius;
            if (field == "Cx1")
                sound.texts[i] = drift;
        }
        return sound;
    };
    const vexa::Sound wide = soundOf("sin(x)", "100", "100"), high = soundOf("pow(x,8)", "1", "0");
    for (const bool loads : {true, false}) {
        Instrument instrument(folder.Path(), Addons::None);
        vexa::Engine& engine = instrument.Engine();
        instrument.Load(wide);
        engine.renderer.SetGain(1);
        engine.renderer.SetJoins(!loads);
        engine.consumer.NoteOn(0, 60, 127, 0);
        EXPECT_LT(test::Peak(test::Render(engine, 4410)), 2);
        loads ? instrument.Load(high) : instrument.Change(wide, high);
        const float peak = test::Peak(test::Render(engine, 4410));
        EXPECT_LT(peak, 4) << loads;
        EXPECT_GT(peak, 0.1F) << loads;
        // While one sound replaces the other, no block mixes parts of both.
        std::jthread player([&engine](const std::stop_token& stop) {
            while (!stop.stop_requested())
                EXPECT_LT(test::Peak(test::Render(engine, 64)), 20);
        });
        const vexa::Sound* before = &high;
        for (int i = 0; i < 3000; i++) {
            const vexa::Sound* next = i % 2 ? &high : &wide;
            loads ? instrument.Load(*next) : instrument.Change(*before, *next);
            before = next;
            std::this_thread::yield();
        }
    }
}

TEST(Instrument, AnotherSoundNeitherWakesEndedNotesNorJumps) {
    const test::ProgramFolder folder;
    vexa::Sound quick = WithCircles(), loud = WithCircles();
    quick.playing.emplace();
    quick.function.expression = "0.1*sin(x)";
    loud.function.expression = "20*sin(x)+50";
    loud.playing.emplace().Of("volume") = "-40";
    loud.envelopes[2].back().t = loud.envelopes[3].back().t = 20;
    Instrument instrument(folder.Path(), Addons::None);
    vexa::Engine& engine = instrument.Engine();
    instrument.Load(quick);
    engine.renderer.SetGain(1);
    engine.consumer.NoteOn(0, 60, 127, 0);
    test::Render(engine, 4410);
    engine.consumer.NoteOff(0, 60, 127, 0);
    test::Render(engine, 44100);
    ASSERT_TRUE(IsSilent(engine.voices));
    instrument.Load(loud);
    EXPECT_EQ(test::Peak(test::Render(engine, 44100)), 0) << "the note had ended";

    // The volume of a sound comes with it, and the centre of its terrain is no step.
    instrument.Load(quick);
    engine.consumer.NoteOn(0, 60, 127, 0);
    test::Render(engine, 4410);
    instrument.Load(loud);
    EXPECT_LT(test::Peak(test::Render(engine, 4410)), 0.3F);
}

TEST(Instrument, WhatIsMissingForAnAddonIsNoFault) {
    const test::ProgramFolder folder;
    Instrument following(folder.Path(), Addons::Following);
    {
        const test::EnvironmentVariable path("PATH", "/none");
        ASSERT_TRUE(following.SetFunction(Of("x")));
        EXPECT_TRUE(Await(following));
        EXPECT_GT(PeakOfANote(following), 0);
    }
    {
        // A compiler without the C library's headers. How to mend that stands before its words.
        const std::filesystem::path compiler = folder.Path() / "gcc";
        std::ofstream(compiler) << "#!/bin/sh\nPATH=" << std::getenv("PATH")
                                << " exec gcc -nostdinc \"$@\"\n";
        std::filesystem::permissions(compiler, std::filesystem::perms::owner_all);
        const test::EnvironmentVariable path("PATH", folder.Path().c_str());
        ASSERT_TRUE(following.SetFunction(Of("x")));
        EXPECT_TRUE(Await(following));
        EXPECT_GT(PeakOfANote(following), 0);
        Instrument awaited(folder.Path(), Addons::Awaited);
        const std::string text = Text(awaited.SetFunction(Of("x")));
        EXPECT_THAT(text, HasSubstr("#include <math.h>"));
        EXPECT_LT(text.find("apt install libc6-dev"), text.find("#include <math.h>"));
    }
    std::filesystem::remove(folder.Function("addon.c"));
    ASSERT_TRUE(following.SetFunction(Of("x")));
    EXPECT_TRUE(Await(following));
    // If an add-on is required, its absence is a fault.
    Instrument awaited(folder.Path(), Addons::Awaited);
    EXPECT_THAT(Text(awaited.SetFunction(Of("x"))), HasSubstr("is missing."));
}

TEST(Instrument, ATemplateThatMisbehavesIsTold) {
    const test::ProgramFolder folder;
    folder.WriteTemplate("float r2rfun(float x, float y) { return EXPRESSION; }\n");
    Instrument following(folder.Path(), Addons::Following);
    ASSERT_TRUE(following.SetFunction(Of("x")));
    EXPECT_THAT(Await(following).alerts,
                ElementsAre("The function r2rfunstr could not be found in addon \n" +
                            folder.Function("recent")));
    EXPECT_GT(PeakOfANote(following), 0);
}

TEST(Instrument, WhatCannotBePlayedLeavesAllAsItWas) {
    const test::ProgramFolder folder;
    Instrument instrument(folder.Path(), Addons::None);
    int shown = 0;
    ASSERT_TRUE(instrument.SetFunction(Of("x")));
    instrument.Watch([&](const auto&) { shown++; });
    std::string costly = "x";
    for (int i = 0; i < 200; i++)
        costly += "+jn(50,x+" + std::to_string(i) + ")";
    const struct {
        std::string expression;
        const char* reason;
    } faults[] = {{"x^2", "pow"}, {"x+", "character 3"}, {costly, "microseconds for a point"}};
    for (const auto& fault : faults) {
        const FunctionReport report = instrument.SetFunction(Of(fault.expression));
        EXPECT_FALSE(report) << fault.expression;
        EXPECT_EQ(report.alerts.size(), 1U);
        EXPECT_THAT(report.text, HasSubstr(fault.reason));
    }
    Function missing;
    missing.kind = vexa::FunctionKind::Sample;
    missing.sampleFile = "none.wav";
    EXPECT_THAT(instrument.SetFunction(missing).alerts, ElementsAre(vexa::kSampleAlert));
    missing.kind = vexa::FunctionKind::Picture;
    missing.pictureFile = "none.png";
    EXPECT_THAT(instrument.SetFunction(missing).alerts, ElementsAre(vexa::kPictureAlert));
    EXPECT_THAT(instrument.Try(missing).text, HasSubstr("pictures/none.png: No such file"));
    missing.pictureFile = "";
    EXPECT_THAT(instrument.Try(missing).text, HasSubstr("names no file"));
    EXPECT_THAT(instrument.SetFunction(missing).text, HasSubstr("names no file"));
    EXPECT_EQ(instrument.State().function, Of("x"));
    EXPECT_EQ(shown, 0);
}

TEST(Instrument, ThePlaneIsShownAsTheNewestNoteHearsIt) {
    Instrument instrument(std::filesystem::path("/none"), Addons::Following);
    vexa::Engine& engine = instrument.Engine();
    engine.consumer.ReduceToMaxVox(20);
    vexa::PlaneFollower follower(engine);
    instrument.Watch([&](const vexa::PlaneFunction& f) { follower.Take(f); });
    std::vector<float> x(1000);
    std::vector<float> values(x.size());
    for (std::size_t i = 0; i < x.size(); i++)
        x[i] = static_cast<float>(i);
    const auto expectNext = [&](double slope, double rest) {
        const auto f = follower.Next();
        ASSERT_TRUE(f);
        f->Evaluate(x.data(), x.data(), values.data(), x.size());
        EXPECT_EQ(values[999], (*f)(999, 999));
        for (std::size_t i = 0; i < x.size(); i++)
            ASSERT_NEAR(values[i], slope * double(x[i]) + rest, 0.02);
        EXPECT_FALSE(follower.Next()) << "nothing has changed";
    };
    const auto pass = [&](double seconds) {
        std::vector<float> samples(static_cast<std::size_t>(seconds * 44100));
        engine.renderer.Render(samples.data(), samples.size());
    };
    ASSERT_TRUE(instrument.SetFunction(Of("x*vel + 127*key + 1000*a + 8000*ctl(5) + t")));
    expectNext(0.8, 560);
    engine.consumer.NoteOn(0, 50, 127, 0);
    expectNext(1, 550);
    pass(2);
    expectNext(1, 552);
    engine.consumer.NoteOn(0, 70, 0x40, 0);
    expectNext(64.0 / 127, 570);
    pass(0.25);
    engine.consumer.NoteOff(0, 70, 0, 0);
    pass(0.25);
    expectNext(64.0 / 127, 570.5);
    engine.consumer.ControlChange(0, 16, 127, 0);
    expectNext(64.0 / 127, 1070.5);
    engine.consumer.ControlChange(0, 5, 127, 0);
    expectNext(64.0 / 127, 9070.5);
    // Inaudible voices cost nothing.
    ASSERT_TRUE(instrument.SetFunction(Of("x")));
    expectNext(1, 0);
    engine.consumer.NoteOn(0, 30, 100, 0);
    pass(0.25);
    EXPECT_FALSE(follower.Next());
    // Notes that are over are not shown, although they keep their slots.
    ASSERT_TRUE(instrument.SetFunction(Of("x*exp(-t)")));
    for (const uint8 key : {30, 50})
        engine.consumer.NoteOff(0, key, 0, 0);
    pass(30);
    EXPECT_EQ(vexa::CountActive(engine.voices), 3);
    expectNext(1, 0);
}

TEST(Instrument, APictureIsTheTerrainAndOutlivesItsFileByName) {
    const test::TemporaryFolder folder;
    const auto write = [&](const char* name, png_byte right) {
        return folder.Write(std::filesystem::path("pictures") / name,
                            test::Png(2, 1, {}, {0, right}));
    };
    write("a.png", 255);
    Instrument instrument(folder.Path(), Addons::Following);
    std::optional<vexa::PlaneFunction> f;
    instrument.Watch([&](const vexa::PlaneFunction& next) { f = next; });
    vexa::Sound sound;
    sound.function.kind = vexa::FunctionKind::Picture;
    sound.function.pictureFile = "a.png";
    ASSERT_TRUE(instrument.Load(sound));
    EXPECT_EQ((*f)(5, 0), 1);
    // An unchanged file plays on and is not read again.
    vexa::Sound edited = sound;
    edited.function.width = "3";
    std::filesystem::remove(folder.Path() / "pictures/a.png");
    f.reset();
    EXPECT_TRUE(instrument.Change(sound, edited));
    EXPECT_FALSE(f);
    EXPECT_EQ(instrument.State().function, edited.function);
    sound.function.pictureFile = write("b.png", 51).string();
    EXPECT_TRUE(instrument.Change(edited, sound));
    EXPECT_EQ((*f)(5, 0), -0.6F);
    // In a window attached to a plug-in a missing file is silent.
    EXPECT_FALSE(instrument.Change(sound, edited));
    EXPECT_EQ((*f)(5, 0), 0);
    EXPECT_EQ(instrument.State().function.pictureFile, "a.png");
    EXPECT_FALSE(instrument.SetSampleFrequency("440"));
    edited.function = Of("x");
    EXPECT_TRUE(instrument.Change(sound, edited));
    EXPECT_EQ((*f)(5, 0), 5);
}

TEST(Instrument, SourcesThatAreKeptAreCompiledAndReadOnce) {
    const test::ProgramFolder folder;
    vexa::FunctionSources sources;
    Instrument first(folder.Path(), Addons::Awaited), second(folder.Path(), Addons::Awaited);
    first.KeepSources(sources);
    second.KeepSources(sources);
    Function sample, picture;
    sample.kind = vexa::FunctionKind::Sample;
    sample.sampleFile = folder.Path() / "a.wav";
    picture.kind = vexa::FunctionKind::Picture;
    picture.pictureFile = folder.Path() / "a.png";
    EXPECT_FALSE(first.Try(sample)) << "there is no file yet, which is not kept";
    std::ofstream(sample.sampleFile) << test::ShortWav(std::vector<int>(2000, 9000), 44100, 1);
    std::ofstream(picture.pictureFile) << test::Png(2, 1, {}, {0, 255});
    ASSERT_TRUE(first.SetFunction(Of("x")));
    EXPECT_TRUE(first.Try(sample));
    EXPECT_TRUE(first.Try(picture));
    std::filesystem::remove_all(folder.Path());
    for (const Function& function : {sample, picture, Of("x")}) {
        EXPECT_TRUE(second.SetFunction(function));
        EXPECT_GT(PeakOfANote(second), 0);
    }
}

/// With formulas and samples of their own, in turns and in four threads as alone.
TEST(Instrument, AHundredPlaySideBySide) {
    const test::ProgramFolder folder;
    std::filesystem::create_directory(folder.Path() / "samples");
    for (int i = 0; i < 2; i++) {
        std::vector<float> saw(1000);
        for (std::size_t k = 0; k < saw.size(); k++)
            saw[k] = static_cast<float>(k % (10 + std::size_t(i))) / 10;
        ASSERT_TRUE(
            test::WriteSound(folder.Path() / "samples" / (std::to_string(i) + ".wav"), saw, 8000));
    }
    const auto make = [&](int number) {
        auto instrument = std::make_unique<Instrument>(folder.Path(), Addons::None);
        vexa::Sound sound = WithCircles();
        sound.function = Of("sin(" + std::to_string(number + 1) + "*x*0.1)*cos(y)*a");
        if (number % 3 == 0) {
            sound.function.kind = vexa::FunctionKind::Sample;
            sound.function.sampleFile = std::to_string(number % 2) + ".wav";
            sound.function.frequency = std::to_string(100 + number);
        }
        EXPECT_TRUE(instrument->Load(sound));
        instrument->Engine().renderer.SetGain(1);
        instrument->Engine().consumer.NoteOn(0, uchar(40 + number % 50), 100, 0);
        return instrument;
    };
    std::vector<std::unique_ptr<Instrument>> all;
    for (int i = 0; i < 100; i++)
        all.push_back(make(i));
    std::vector<std::vector<float>> turns(all.size());
    {
        std::vector<std::jthread> threads;
        for (std::size_t first = 0; first < 4; first++)
            threads.emplace_back([&, first] {
                for (int turn = 0; turn < 20; turn++) {
                    for (std::size_t i = first; i < all.size(); i += 4) {
                        const std::vector<float> piece = test::Render(all[i]->Engine(), 200);
                        turns[i].insert(turns[i].end(), piece.begin(), piece.end());
                    }
                }
            });
    }
    all.clear();
    for (int i = 0; i < 100; i++) {
        const auto alone = make(i);
        std::vector<float> samples;
        for (int turn = 0; turn < 20; turn++) {
            const std::vector<float> piece = test::Render(alone->Engine(), 200);
            samples.insert(samples.end(), piece.begin(), piece.end());
        }
        EXPECT_EQ(samples, turns[std::size_t(i)]) << i;
        EXPECT_GT(test::Peak(samples), 0) << i;
    }
}

} // namespace
