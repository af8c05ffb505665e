// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults of the plug-in as an LV2 host sees it.
#include "documents/SoundDocument.h"
#include "instrument/InitialSound.h"
#include "plugin/HostedFolders.h"
#include "plugin/Lv2Host.h"
#include "support/Command.h"
#include "support/Environment.h"
#include "support/Pictures.h"
#include "support/RealtimeWatch.h"
#include "support/SoundFiles.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <limits>
#include <memory>

#include <gmock/gmock.h>
#include <pwd.h>
#include <unistd.h>

namespace {

using namespace vexa;
using test::Id;
using test::Lv2Host;
using testing::HasSubstr;

constexpr std::size_t kVolume = 0, kGlide = 6, kOversample = 10;

/// Returns an audible sound with that function.
Sound WithFormula(const std::string& expression) {
    Sound sound = *ReadSound(VEXA_SOURCE_FOLDER "/benchmarks/twin-hills.xml");
    sound.function.kind = FunctionKind::Expression;
    sound.function.expression = expression;
    return sound;
}

std::string TextOf(const std::string& expression) {
    return SoundText(WithFormula(expression));
}

float Peak(const std::vector<float>& samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::isfinite(sample) ? std::abs(sample) : 1e9F);
    return peak;
}

/// Returns a sine with a period of `period` samples.
std::vector<float> Wave(int period) {
    std::vector<float> wave(4000);
    for (std::size_t i = 0; i < wave.size(); i++)
        wave[i] = std::sin(2 * M_PIf * static_cast<float>(i) / static_cast<float>(period));
    return wave;
}

/// Every test fails if run() allocates, releases memory or locks a mutex.
class Lv2 : public testing::Test {
  protected:
    void TearDown() override { EXPECT_EQ(watch.Faults(), 0); }

    const test::TemporaryFolder folder;
    const test::RealtimeWatch watch;
};

struct Event {
    int milliseconds;
    std::vector<uint8_t> bytes;
};
/// Keys on three channels, two of them bent by MPE.
const std::vector<Event> kTune = {
    {0, {0x90, 60, 100}}, {8, {0x91, 64, 90}},  {9, {0xE1, 0, 80}},    {20, {0x92, 67, 80}},
    {21, {0xE2, 0, 10}},  {40, {0x80, 60, 64}}, {60, {0x91, 72, 127}}, {90, {0x92, 67, 0}},
};
constexpr int kTuneMilliseconds = 120;

std::string MidiFile(const std::vector<Event>& events) {
    std::string track;
    int before = 0;
    for (const Event& event : events) {
        track += static_cast<char>(event.milliseconds - before);
        track.append(event.bytes.begin(), event.bytes.end());
        before = event.milliseconds;
    }
    track += std::string("\0\xFF\x2F\0", 4);
    return std::string("MThd\0\0\0\6\0\0\0\1\1\xF4MTrk\0\0\0", 21) +
           static_cast<char>(track.size()) + track;
}

/// Returns vexa-render's output for the tune and the sound, the ears interleaved.
std::vector<float> Rendered(const test::TemporaryFolder& folder, const std::string& sound, int rate,
                            const std::vector<std::string>& more) {
    const auto out = folder.Path() / "out.wav";
    std::vector<std::string> command{VEXA_PROGRAM_FOLDER "/vexa-render",
                                     folder.Write("tune.mid", MidiFile(kTune)),
                                     out,
                                     "--sound",
                                     folder.Write("sound.xml", sound),
                                     "--rate",
                                     std::to_string(rate),
                                     "--tail",
                                     "0.3", // the notes that are held fade out after those played
                                     "--quiet"};
    command.insert(command.end(), more.begin(), more.end());
    const test::CommandResult result = test::RunCommand(std::move(command));
    EXPECT_EQ(result.exitCode, 0) << result.text;
    const test::DecodedSound file = test::ReadSound(out, 0);
    if (file.channels == 2)
        return file.values;
    std::vector<float> ears;
    for (const float value : file.values)
        ears.insert(ears.end(), {value, value});
    return ears;
}

/// Returns the output of an instance that plays the tune in blocks of all sizes.
std::vector<float> Played(Lv2Host& host) {
    constexpr std::array<uint32_t, 6> blocks{1, 0, 511, 64, 8192, 37};
    host.Run(512);
    const auto frames =
        static_cast<uint32_t>(host.rate * kTuneMilliseconds / 1000 + double(host.latency));
    std::vector<float> ears;
    std::size_t next = 0;
    for (uint32_t done = 0, i = 0; done < frames; i++) {
        const uint32_t count = std::min(blocks[i % blocks.size()], frames - done);
        for (; next < kTune.size(); next++) {
            const auto at =
                static_cast<uint32_t>(std::lround(host.rate * kTune[next].milliseconds / 1000));
            if (at >= done + count)
                break;
            host.Midi(at - done, kTune[next].bytes);
        }
        std::vector<float> right;
        const std::vector<float> left = host.Run(count, &right);
        for (std::size_t s = 0; s < left.size(); s++)
            ears.insert(ears.end(), {left[s], right[s]});
        done += count;
    }
    ears.erase(ears.begin(), ears.begin() + 2 * static_cast<std::ptrdiff_t>(host.latency));
    return ears;
}

TEST_F(Lv2, EightInstancesPlayWhatVexaRenderGives) {
    std::vector<std::string> samples;
    for (const int period : {50, 80, 131}) {
        samples.push_back((folder.Path() / (std::to_string(period) + ".wav")).string());
        ASSERT_TRUE(test::WriteSound(samples.back(), Wave(period), 22050));
    }
    const auto scale = folder.Write("wide.scl", "wide\n2\n700.\n2/1\n").string();
    const auto keymap = folder.Write("k.kbm", "0\n0\n127\n60\n60\n300\n0\n").string();
    using Options = std::vector<std::string>;
    using Set = std::pair<std::string, std::string>;
    const struct Row {
        int rate;
        /// An expression, or the number of a sample.
        std::string function;
        std::vector<std::pair<std::size_t, float>> knobs;
        std::vector<Set> sets;
        Options options;
    } rows[] = {
        {8000, "sin(x)*cos(y)", {}, {}, {}},
        {48000, "0", {}, {}, {}},
        {384000, "sin(3*x)*y", {{kVolume, -12}}, {}, {"--volume", "-12"}},
        {44100, "x*y*a", {{kFirstMacroControl, 0.9F}}, {}, {"--macro", "a=0.9"}},
        {48000, "1", {{kMpeControl, 1}}, {}, {"--mpe"}},
        {96000,
         "cos(2*x)-y*y",
         {{kOversample, 4}, {5, 90}},
         {},
         {"--oversample", "4", "--spread", "90"}},
        {48000, "2", {{kOversample, 16}}, {}, {"--oversample", "16"}},
        {48000,
         "tanh(x-y)",
         {{7, 12}},
         {{"tuning", scale}, {"keymap", keymap}},
         {"--tuning", scale, "--keymap", keymap, "--bend", "12"}},
    };
    std::vector<std::unique_ptr<Lv2Host>> hosts;
    for (const Row& row : rows) {
        hosts.push_back(std::make_unique<Lv2Host>(row.rate));
        Lv2Host& host = *hosts.back();
        Sound sound = WithFormula(row.function);
        if (row.function.size() == 1) {
            sound.function.kind = FunctionKind::Sample;
            sound.function.sampleFile = samples[static_cast<std::size_t>(row.function[0] - '0')];
            sound.function.frequency = "300";
        }
        for (const auto& [knob, value] : row.knobs)
            host.controls[knob] = value;
        for (const auto& [property, value] : row.sets) {
            host.Set(property, value);
            ASSERT_TRUE(host.RunUntil([&] { return host.told[property] == value; }));
        }
        ASSERT_EQ(host.Restore({{"document", SoundText(sound)}}), LV2_STATE_SUCCESS);
    }
    for (std::size_t i = 0; i < hosts.size(); i++) {
        // The saved state is a sound document, which the programs can open.
        const std::vector<float> expected =
            Rendered(folder, hosts[i]->Save()["document"], rows[i].rate, rows[i].options);
        const std::vector<float> heard = Played(*hosts[i]);
        ASSERT_GT(Peak(heard), 1e-3F) << i;
        ASSERT_GE(expected.size(), heard.size()) << i;
        for (std::size_t s = 0; s < heard.size(); s++)
            ASSERT_NEAR(heard[s], expected[s], 1e-6) << i << ", " << s;
    }
}

TEST_F(Lv2, WhatIsNoSoundOfOursLeavesAllAsItWas) {
    Lv2Host host;
    const std::string good = TextOf("x*y/(1+x*x+y*y)");
    ASSERT_EQ(host.Restore({{"document", good}}), LV2_STATE_SUCCESS);
    const Lv2Host::Values before = host.Save();
    EXPECT_EQ(before.at("document"), good);
    const std::tuple<std::string, const char*, std::string> rows[] = {
        {"", LV2_ATOM__String, "sound"},
        {"urn:other", LV2_ATOM__String, "root element"},
        {good.substr(0, good.size() / 2), LV2_ATOM__String, "sound:"},
        {"<other/>", LV2_ATOM__String, "root element"},
        {std::string(1 << 20, '<'), LV2_ATOM__String, "sound:1:1"},
        {std::string(100, '\0') + good, LV2_ATOM__String, "sound"},
        {TextOf("system(1)"), LV2_ATOM__String, "character 1"},
        {TextOf("x+"), LV2_ATOM__String, "character 3"},
        {good, LV2_ATOM__Float, "no sound of Vexa"},
        {good, "urn:other#document", "no sound of Vexa"},
    };
    host.Midi(0, {0x90, 60, 100});
    for (const auto& [document, type, message] : rows) {
        EXPECT_NE(host.Restore({{"document", document}}, type), LV2_STATE_SUCCESS) << message;
        EXPECT_EQ(host.Save(), before) << message;
        EXPECT_THAT(host.logged, HasSubstr(message));
        EXPECT_THAT(host.logged, testing::Not(HasSubstr("gcc")));
        host.logged.clear();
        EXPECT_GT(Peak(host.Run(256)), 1e-4F);
        EXPECT_THAT(host.told["message"], HasSubstr(message));
    }
    // A host first restores an empty state, which is not a fault.
    EXPECT_EQ(host.Restore({}), LV2_STATE_ERR_NO_PROPERTY);
    EXPECT_EQ(host.logged, "");
    // Elements of a newer version are kept.
    std::string newer = good;
    newer.insert(newer.rfind("</vexasound>"), "<future><depth>3</depth></future>");
    EXPECT_EQ(host.Restore({{"document", newer}}), LV2_STATE_SUCCESS);
    EXPECT_THAT(host.Save()["document"], HasSubstr("<depth>3</depth>"));
}

TEST_F(Lv2, FilesThatHaveGoneAreToldAndRemembered) {
    Lv2Host host;
    Sound sound = WithFormula("");
    sound.function.kind = FunctionKind::Sample;
    sound.function.sampleFile = "/gone/first.wav";
    const auto scale = folder.Write("bad.scl", "of no use\n").string();
    Lv2Host::Values state{{"document", SoundText(sound)},
                          {"samplefile", "/gone/second.wav"},
                          {"tuning", scale},
                          {"keymap", "/gone/map.kbm"}};
    EXPECT_EQ(host.Restore(state), LV2_STATE_SUCCESS);
    for (const std::string& name : {std::string("/gone/first.wav"), scale})
        EXPECT_THAT(host.logged, HasSubstr(name));
    host.Midi(0, {0x90, 60, 100});
    EXPECT_EQ(Peak(host.Run(256)), 0);
    state["samplefile"] = "/gone/first.wav";
    EXPECT_EQ(host.Save(), state);
    // The path of the sample in the session takes precedence over the document's own.
    const std::string here = (folder.Path() / "here.wav").string();
    ASSERT_TRUE(test::WriteSound(here, Wave(80), 22050));
    state["samplefile"] = here;
    host.Restore(state, LV2_ATOM__Path);
    host.Midi(0, {0x90, 60, 100});
    EXPECT_GT(Peak(host.Run(4096)), 1e-4F);
    EXPECT_EQ(host.Save(), state) << "from here the next session plays it";
    // The same holds for a picture; a sample at its path is not a picture.
    sound.function.kind = FunctionKind::Picture;
    sound.function.pictureFile = "/gone/first.png";
    state["document"] = SoundText(sound);
    host.logged.clear();
    host.Restore(state, LV2_ATOM__Path);
    EXPECT_THAT(host.logged, HasSubstr("here.wav: it is neither PNG nor JPEG"));
    host.Run(4096);
    EXPECT_LT(Peak(host.Run(256)), 1e-6F);
    state["samplefile"] = folder.Write("here.png", test::Png(2, 1, {}, {0, 255})).string();
    host.Restore(state, LV2_ATOM__Path);
    host.Midi(0, {0x90, 60, 100});
    EXPECT_GT(Peak(host.Run(4096)), 1e-4F);
    EXPECT_EQ(host.Save(), state) << "from here the next session plays it";
    // A preset leaves the tuning to the player, and a refused state leaves the tuning unchanged.
    EXPECT_EQ(host.Restore({{"document", TextOf("x")}}), LV2_STATE_SUCCESS);
    host.Set("keymap", "/gone/other.kbm");
    ASSERT_TRUE(
        host.RunUntil([&] { return host.told["message"].find("other.kbm") != std::string::npos; }));
    EXPECT_EQ(host.Save()["tuning"], scale);
    host.Set("tuning", "");
    host.Set("keymap", "");
    EXPECT_TRUE(
        host.RunUntil([&] { return host.told["keymap"].empty() && host.told["message"].empty(); }));
    EXPECT_EQ(host.Save()["tuning"], "");
}

TEST_F(Lv2, MessagesThatMeanNothingChangeNothing) {
    Lv2Host host;
    host.Restore({{"document", TextOf("x*y/(1+x*x+y*y)")}});
    const Lv2Host::Values before = host.Save();
    const std::string huge(1 << 20, 'x');
    const auto key = [](LV2_Atom_Forge& f, const char* name) { lv2_atom_forge_key(&f, Id(name)); };
    const auto formula = [&](LV2_Atom_Forge& f) {
        key(f, LV2_PATCH__property);
        lv2_atom_forge_urid(&f, Id("urn:vexa:instrument#formula"));
    };
    const std::function<void(LV2_Atom_Forge&)> bodies[] = {
        [](LV2_Atom_Forge&) {},
        [&](LV2_Atom_Forge& f) { formula(f); },
        [&](LV2_Atom_Forge& f) {
            key(f, LV2_PATCH__property);
            lv2_atom_forge_string(&f, "#formula", 8);
            key(f, LV2_PATCH__value);
            lv2_atom_forge_string(&f, "y", 1);
        },
        [&](LV2_Atom_Forge& f) {
            key(f, LV2_PATCH__property);
            lv2_atom_forge_urid(&f, Id("urn:other"));
            key(f, LV2_PATCH__value);
            lv2_atom_forge_string(&f, "y", 1);
        },
        [&](LV2_Atom_Forge& f) {
            key(f, LV2_PATCH__property);
            lv2_atom_forge_urid(&f, Id("urn:vexa:instrument#message"));
            key(f, LV2_PATCH__value);
            lv2_atom_forge_string(&f, "y", 1);
        },
        [&](LV2_Atom_Forge& f) {
            formula(f);
            key(f, LV2_PATCH__value);
            lv2_atom_forge_float(&f, 1);
        },
        // The atom claims to be longer than the message. It is followed by a formula: the frame of
        // the next message.
        [&](LV2_Atom_Forge& f) {
            formula(f);
            key(f, LV2_PATCH__value);
            lv2_atom_forge_atom(&f, 0xFFFFFFF0U, Id(LV2_ATOM__String));
        },
        [&](LV2_Atom_Forge& f) {
            formula(f);
            key(f, LV2_PATCH__value);
            lv2_atom_forge_string(&f, huge.data(), 1 << 20);
        },
    };
    for (const auto& body : bodies) {
        for (const char* kind : {LV2_PATCH__Set, LV2_PATCH__Put, LV2_PATCH__Get})
            host.Patch(kind, body, 'y');
        host.Run(128);
    }
    for (int i = 0; i < 40; i++)
        host.Set("formula", std::string(60000, 'x'));
    host.Run(64);
    for (const std::vector<uint8_t>& bytes : {std::vector<uint8_t>{},
                                              {0x90},
                                              {0x90, 60},
                                              {60, 60, 60},
                                              {0xF0, 1, 2, 0xF7},
                                              {0xFF, 255, 255}})
        host.Midi(0, bytes);
    host.controls.fill(std::numeric_limits<float>::quiet_NaN());
    host.Run(64);
    host.Midi(0, {0x90, 60, 100});
    EXPECT_GT(Peak(host.Run(4096)), 1e-4F);
    host.controls.fill(std::numeric_limits<float>::infinity());
    EXPECT_LT(Peak(host.Run(4096)), 100);
    EXPECT_TRUE(host.RunUntil([&] { return !host.told["message"].empty(); }));
    EXPECT_EQ(host.Save(), before);
}

TEST_F(Lv2, WhatIsSetIsHeardToldAndKept) {
    for (const Lv2Host::Kind kind : {Lv2Host::Own, Lv2Host::WithWorker}) {
        Lv2Host host(48000, kind);
        ASSERT_TRUE(host.RunUntil([&] { return true; }));
        host.Patch(LV2_PATCH__Get, [](LV2_Atom_Forge&) {});
        ASSERT_TRUE(host.RunUntil([&] { return host.told.size() == std::size(lv2::kProperties); }));
        EXPECT_EQ(host.told["formula"],
                  ReadSound(VEXA_SOURCE_FOLDER "/data/sounds/default.xml")->function.expression);
        // If the worker has no room it is asked again.
        host.full = true;
        host.Set("formula", "x-y");
        host.Run(64);
        host.full = false;
        ASSERT_TRUE(host.RunUntil([&] { return host.told["formula"] == "x-y"; }));
        EXPECT_THAT(host.Save()["document"], HasSubstr("<expression>x-y<"));
        // The fault gives its position each time, and a valid formula clears it.
        for (int i = 0; i < 2; i++) {
            host.told.clear();
            host.Set("formula", "x**y");
            ASSERT_TRUE(host.RunUntil([&] { return host.told.contains("message"); }));
            EXPECT_THAT(host.told["message"], HasSubstr("character 3"));
        }
        EXPECT_THAT(host.logged, HasSubstr("character 3"));
        EXPECT_THAT(host.logged, testing::Not(HasSubstr("gcc")));
        host.Set("formula", "x+y");
        ASSERT_TRUE(host.RunUntil([&] { return host.told["message"].empty(); }));
        // A sound replaces the formula or sample by its own.
        const std::string sound = VEXA_SOURCE_FOLDER "/data/sounds/voice.xml";
        host.Set("sound", sound);
        ASSERT_TRUE(host.RunUntil([&] { return host.told["sound"] == sound; }));
        EXPECT_THAT(host.told["sample"], testing::EndsWith("vexa.lv2/samples/vowel.wav"));
        EXPECT_EQ(host.told["formula"], "");
        const std::string picture = folder.Write("a.png", test::Png(2, 1, {}, {0, 255})).string();
        host.Set("picture", picture);
        ASSERT_TRUE(host.RunUntil([&] { return host.told["picture"] == picture; }));
        EXPECT_EQ(host.told["sample"], "");
        host.Set("picture", "/gone.png");
        ASSERT_TRUE(host.RunUntil([&] { return !host.told["message"].empty(); }));
        EXPECT_THAT(host.told["message"], HasSubstr("/gone.png: No such file"));
        host.told.clear();
        host.Patch(LV2_PATCH__Get, [](LV2_Atom_Forge& f) {
            lv2_atom_forge_key(&f, Id(LV2_PATCH__property));
            lv2_atom_forge_urid(&f, Id("urn:vexa:instrument#sample"));
        });
        ASSERT_TRUE(host.RunUntil([&] { return !host.told.empty(); }));
        EXPECT_EQ(host.told.size(), 1U);
        // A host that restores another sound is notified of it, even if its port has little room.
        host.notificationBytes = 200;
        host.Restore({{"document", TextOf("x" + std::string(400, ' '))}});
        ASSERT_TRUE(host.RunUntil([&] { return host.told.contains("sound"); }));
        EXPECT_EQ(host.told["sample"], "");
        host.notificationBytes = 0;
        host.Restore({{"document", TextOf("y")}});
        host.Run(64);
        host.notificationBytes = Lv2Host::kNotificationBytes;
        ASSERT_TRUE(host.RunUntil([&] { return host.told["formula"] == "y"; }));
    }
}

TEST_F(Lv2, KnobsStayOutOfTheDocumentAndAboveTheSound) {
    Lv2Host host;
    host.Restore({{"document", TextOf("sin(x)*cos(y)")}});
    const Lv2Host::Values before = host.Save();
    host.controls[kVolume] = -40;
    host.Midi(0, {0x90, 60, 100});
    const float quiet = Peak(host.Run(8192));
    // While a sound is loaded, its own values never replace those of the controls, not even for one
    // block.
    std::jthread loader([&](const std::stop_token& stop) {
        while (!stop.stop_requested())
            host.Restore({{"document", before.at("document")}});
    });
    for (int i = 0; i < 60; i++)
        ASSERT_LT(Peak(host.Run(8192)), 2 * quiet) << i;
    loader = {};
    host.controls[kVolume] = -41;
    EXPECT_GT(Peak(host.Run(8192)), 20 * quiet);
    EXPECT_EQ(host.Save(), before);
    // A sound may set the oversampling, and a control may override it; the latency is reported.
    Sound fine = WithFormula("sin(x)*cos(y)");
    fine.playing.emplace().Of("oversample") = "4";
    host.Restore({{"document", SoundText(fine)}});
    const std::pair<float, float> told[] = {{0, 96}, {1, 0}, {2, 96}, {0, 96}, {16, 96}, {-3, 96}};
    for (const auto& [knob, delay] : told) {
        host.controls[kOversample] = knob;
        host.Run(64);
        host.Run(64);
        EXPECT_EQ(host.latency, delay) << knob;
    }
}

TEST_F(Lv2, ALowerVoiceLimitSparesTheKeysThatAreHeldAndNoOthers) {
    Lv2Host host;
    const auto play = [&](uint8_t status) {
        for (const uint8_t key : {60, 64, 67})
            host.Midi(0, {status, key, 100});
        host.Run(8192);
        return Peak(host.Run(8192));
    };
    host.Restore({{"document", TextOf("sin(x)")}});
    const float three = play(0x90);
    Sound one = WithFormula("sin(x)");
    one.playing.emplace().Of("polyphony") = "1";
    host.Restore({{"document", SoundText(one)}});
    host.Run(8192);
    EXPECT_GT(Peak(host.Run(8192)), 0.9F * three);
    play(0x80);
    EXPECT_LT(play(0x90), 0.5F * three);
}

TEST_F(Lv2, WhereNobodyListensAFormulaIsHeardFromItsFrameOn) {
    Lv2Host host;
    host.Restore({{"document", TextOf("x-y")}});
    host.freewheel = 1;
    host.Midi(0, {0x90, 60, 100});
    EXPECT_GT(Peak(host.Run(512)), 1e-4F);
    host.Set("formula", "0");
    host.Run(512);
    EXPECT_THAT(host.Save()["document"], HasSubstr("<expression>0<"));
    host.Run(4096);
    EXPECT_LT(Peak(host.Run(4096)), 1e-4F);
}

TEST_F(Lv2, BeginsAnewWhenItIsActivated) {
    Lv2Host host;
    host.Restore({{"document", TextOf("sin(x)*cos(y)*(a+ctl(7))")}});
    host.controls[kGlide] = 0.2F;
    const std::vector<float> first = Played(host);
    host.Midi(0, {0x90, 60, 100});
    host.Midi(0, {0xE0, 0, 127});
    for (const uint8_t controller : {7, 11, 16, 64})
        host.Midi(0, {0xB0, controller, 127});
    host.Run(512);
    for (int i = 0; i < 3; i++)
        host.Activate();
    EXPECT_EQ(Peak(host.Run(512)), 0);
    host.Deactivate();
    host.Deactivate();
    host.Activate();
    host.Deactivate();
    EXPECT_EQ(Played(host), first);
}

TEST_F(Lv2, PortsMayLieInOnePlaceOrNowhere) {
    Lv2Host host;
    host.Restore({{"document", TextOf("x-y")}});
    host.Connect(lv2::kNotifications, host.events.data());
    host.Connect(lv2::kLatency, &host.freewheel);
    host.Midi(0, {0x90, 60, 100});
    EXPECT_GT(Peak(host.Run(512)), 1e-4F);
    for (uint32_t port = 0; port < lv2::kPorts + 2; port++) {
        host.Connect(port, nullptr);
        host.Run(512);
    }
    host.Connect(lv2::kEvents, host.events.data());
    for (const double rate : {0.0, -1.0, 1e9, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(Lv2Host{rate}, std::runtime_error);
}

TEST_F(Lv2, OthersPlayWhileInstancesComeAndGo) {
    const test::EnvironmentVariable user("XDG_DATA_HOME", folder.Path().c_str());
    Lv2Host host(48000, Lv2Host::WithWorker);
    host.Midi(0, {0x90, 60, 100});
    std::jthread worker([&](const std::stop_token& stop) {
        while (!stop.stop_requested())
            host.Work();
    });
    std::jthread session([&](const std::stop_token& stop) {
        for (int i = 0; !stop.stop_requested(); i++) {
            host.Restore({{"document", TextOf("x+" + std::to_string(i % 3))}});
            host.Save();
        }
    });
    std::jthread maker([] {
        for (int i = 0; i < 64; i++) {
            Lv2Host other(44100);
            other.Set("formula", "y");
            other.Run(1);
        }
    });
    for (int i = 0; i < 200; i++) {
        host.Set("formula", i % 2 ? "x*y" : "nonsense");
        ASSERT_LT(Peak(host.Run(i % 2 ? 1 : 512)), 100);
    }
    maker.join();
    // Nothing is written into the user's folder.
    EXPECT_EQ(folder.Count(), 0U);
}

TEST_F(Lv2, AnotherSoundStandsInForADefaultThatCannotBePlayed) {
    const test::EnvironmentVariable user("XDG_DATA_HOME", folder.Path().c_str());
    const std::tuple<std::string, const char*, Sound> cases[] = {
        {"<vexasound",
         "default.xml:1:1: ", *ReadSound(VEXA_SOURCE_FOLDER "/data/sounds/default.xml")},
        {TextOf("nonsense"), "\"nonsense\"", InitialSound()}};
    for (const auto& [document, fault, playing] : cases) {
        folder.Write("vexa/sounds/default.xml", document);
        Lv2Host host;
        EXPECT_THAT(host.logged, HasSubstr(fault));
        EXPECT_EQ(host.Save()["document"], SoundText(playing));
        host.Midi(0, {0x90, 60, 100});
        EXPECT_GT(Peak(host.Run(4096)), 1e-3F);
    }
}

/// Catches folders below the host's current folder if the environment names none of the user's.
TEST(HostedFolders, AreThePersonsEvenWhereTheEnvironmentNamesNone) {
    const test::EnvironmentVariable data("XDG_DATA_HOME", "");
    for (const std::string home : {"", "/me"}) {
        const test::EnvironmentVariable set("HOME", home.c_str());
        const kits::ProgramFolders folders = HostedFolders("/bundle");
        const std::filesystem::path own = home.empty() ? ::getpwuid(::getuid())->pw_dir : home;
        EXPECT_EQ(folders.Own("sounds"), own / ".local/share/vexa/sounds");
        EXPECT_EQ(folders.Shipped("sounds"), "/bundle/sounds");
    }
}

TEST_F(Lv2, TheBundleHasEverySoundInItsCategory) {
    LilvNode* type = lilv_new_uri(test::World(), "http://lv2plug.in/ns/ext/presets#Preset");
    LilvNode* bank = lilv_new_uri(test::World(), "http://lv2plug.in/ns/ext/presets#bank");
    LilvNode* label = lilv_new_uri(test::World(), LILV_NS_RDFS "label");
    LilvNodes* presets = lilv_plugin_get_related(test::InBundle(), type);
    std::map<std::string, std::string> banks;
    LV2_URID_Map map{nullptr, [](LV2_URID_Map_Handle, const char* uri) { return Id(uri); }};
    LILV_FOREACH(nodes, i, presets) {
        const LilvNode* preset = lilv_nodes_get(presets, i);
        lilv_world_load_resource(test::World(), preset);
        LilvState* state = lilv_state_new_from_world(test::World(), &map, preset);
        LilvNode* in = lilv_world_get(test::World(), preset, bank, nullptr);
        LilvNode* category = in ? lilv_world_get(test::World(), in, label, nullptr) : nullptr;
        banks[lilv_state_get_label(state)] = category ? lilv_node_as_string(category) : "";
        lilv_node_free(category);
        lilv_node_free(in);
        lilv_state_free(state);
    }
    lilv_nodes_free(presets);
    for (LilvNode* node : {type, bank, label})
        lilv_node_free(node);
    std::size_t sounds = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(VEXA_SOURCE_FOLDER "/data/sounds")) {
        const Sound sound = *ReadSound(file.path());
        EXPECT_EQ(banks[sound.info.name.value_or("")], sound.info.category.value_or(""));
        sounds++;
    }
    EXPECT_EQ(banks.size(), sounds);
}

#if VEXA_HAS_MODULE
TEST_F(Lv2, TheSharedObjectPlays) {
    Lv2Host host(48000, Lv2Host::FromBundle);
    host.Restore({{"document", TextOf("x-y")}});
    host.Midi(0, {0x90, 60, 100});
    EXPECT_GT(Peak(host.Run(4096)), 1e-4F);
}
#endif

} // namespace
