// SPDX-License-Identifier: GPL-3.0-or-later
// Renders whole tunes as a user does, and finds their notes in the output. Catches notes that are
// missing, wrong or late.
#include "kits/support/SupportDefs.h"
#include "support/Command.h"
#include "support/Environment.h"
#include "support/MidiFiles.h"
#include "support/SoundFiles.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using test::MidiMessage;
using testing::HasSubstr;

constexpr double kTuneRate = 44100;

class Tune : public testing::Test {
  protected:
    /// Renders a file of those messages; returns the program's output.
    std::string Render(const std::vector<MidiMessage>& messages, std::vector<std::string> options) {
        const std::string midi = folder.Write("a.mid", test::MidiFileOf(messages)).string();
        const std::string wav = (folder.Path() / "a.wav").string();
        options.insert(options.begin(),
                       {VEXA_PROGRAM_FOLDER "/vexa-render", midi, wav, "--user-folder"});
        const test::CommandResult result = test::RunCommand(options);
        EXPECT_EQ(result.exitCode, 0) << result.text;
        const test::DecodedSound file = test::ReadSound(wav, 0);
        channels = file.channels;
        left.clear();
        right.clear();
        for (std::size_t i = 0; i < file.values.size(); i += channels) {
            left.push_back(file.values[i]);
            right.push_back(file.values[i + channels - 1]);
        }
        return result.text;
    }
    /// Returns the amplitude over 0.4 seconds.
    double Level(double second, double hertz) const {
        const auto from = static_cast<std::size_t>(second * kTuneRate);
        return test::Amplitude({&left[from], std::size_t(0.4 * kTuneRate)}, hertz, kTuneRate);
    }
    /// Returns by how many cents a note that sounds from `second` on for 1.6 seconds is above the
    /// frequency.
    double Cents(double second, double hertz) const {
        const auto length = static_cast<std::size_t>(0.8 * kTuneRate);
        const auto from = static_cast<std::size_t>(second * kTuneRate);
        const auto phase = [&](std::size_t begin) {
            return std::arg(test::Component({&left[begin], length}, hertz, kTuneRate));
        };
        const double expected = 2 * M_PI * hertz * double(length) / kTuneRate;
        const double turns =
            std::remainder(phase(from + length) - phase(from) - expected, 2 * M_PI) / (2 * M_PI);
        return 1200 * std::log2(1 + (turns / 0.8) / hertz);
    }
    /// Writes a sine with more elements into the user's sounds.
    void WriteSine(const std::string& name, const std::string& more) const {
        std::string text = test::kSineSound;
        folder.Write("vexa/sounds/" + name, text.insert(text.rfind('<'), more));
    }

    test::TemporaryFolder folder;
    test::EnvironmentVariable data{"XDG_DATA_HOME", folder.Path().c_str()};
    /// The output of the last render.
    std::size_t channels = 0;
    std::vector<float> left, right;
};

/// Uses two sounds an octave apart. A note that sounds during the change continues.
TEST_F(Tune, ProgramChangesChooseSoundsAtTheirFrame) {
    WriteSine("0.xml", "<fx>2</fx>");
    WriteSine("1.xml", "<playing><spread>90</spread></playing>");
    folder.Write("vexa/sounds/2.xml", "no sound");
    folder.Write("vexa/sounds/3.xml", "<vexasound><vexafunction><expression>2x</expression>"
                                      "</vexafunction></vexasound>");
    const std::vector<MidiMessage> tune{
        {0, {0xC0, 0}},        {100, {0x90, 69, 100}},  // 880 Hz
        {600, {0xB0, 32, 1}},  {600, {0xC0, 0}},        // a bank that there is not
        {700, {0xB0, 32, 0}},  {700, {0xC0, 2}},        // broken
        {800, {0xC0, 3}},                               // without a function
        {1000, {0xC0, 1}},     {1000, {0x91, 74, 100}}, // half as high
        {1500, {0x80, 69, 0}}, {1500, {0x81, 74, 0}}};
    EXPECT_THAT(Render(tune, {"--programs"}),
                testing::AllOf(HasSubstr("there is no program 128"), HasSubstr("2.xml"),
                               HasSubstr("3.xml: <expression>: character 1: ")));
    EXPECT_EQ(channels, 2U) << "the second sound has a spread";
    EXPECT_GT(Level(0.55, 880), 0.2);
    EXPECT_LT(Level(0.55, 440), 0.01);
    EXPECT_GT(Level(1.05, 440), 0.2);
    EXPECT_GT(Level(1.05, 587.3295), 0.2);
    const std::vector<float> changed = left;
    // Nothing of a sound matters that plays only notes which are not heard.
    EXPECT_THAT(Render(tune, {"--programs", "--channel", "1"}), HasSubstr(" 1 note, "));
    EXPECT_EQ(channels, 1U);
    EXPECT_THAT(Render(tune, {"--programs", "--channel", "1", "--mpe"}), HasSubstr(" 2 notes, "));
    EXPECT_EQ(channels, 2U) << "channel 2 is a member";
    // Up to that frame the output is the same as without the change.
    std::vector<MidiMessage> unchanged(tune.begin(), tune.begin() + 2);
    unchanged.push_back({1500, {0x80, 69, 0}});
    Render(unchanged, {"--programs"});
    EXPECT_EQ(channels, 1U);
    const auto parted = std::mismatch(left.begin(), left.end(), changed.begin());
    EXPECT_NEAR(double(parted.first - left.begin()), 44100, 1);
    const std::vector<float> chosen = left;
    unchanged.erase(unchanged.begin());
    Render(unchanged, {"--sound", "0"});
    EXPECT_EQ(left, chosen) << "the same bytes as with the sound that was loaded before";
    Render(tune, {"--sound", "0"});
    EXPECT_GT(Level(1.05, 880), 0.2) << "otherwise they mean nothing";

    // All these sounds have one expression, for which the compiler runs once.
    const std::string runs = (folder.Path() / "runs").string();
    const auto compiler = folder.Write("bin/gcc", "#!/bin/sh\necho >>'" + runs +
                                                      "'\nPATH=${PATH#*:} exec gcc \"$@\"\n");
    std::filesystem::permissions(compiler, std::filesystem::perms::owner_all);
    const test::EnvironmentVariable path(
        "PATH", (compiler.parent_path().string() + ':' + std::getenv("PATH")).c_str());
    Render(tune, {"--programs", "--compile", "--sound", "0", "--channel-sound", "2=1"});
    EXPECT_EQ(test::Contents(runs), "\n");
}

/// The channels rendered alone must add up to the whole, bit for bit, whether stereo, oversampled,
/// bent, moved by controllers, silenced or given another sound.
TEST_F(Tune, ChannelsWithSoundsOfTheirOwnAddUp) {
    WriteSine("0.xml", "<fx>3</fx><playing><bend>12</bend></playing>");
    WriteSine("wide.xml", "<playing><spread>90</spread><oversample>4</oversample></playing>");
    std::string moved = test::kSineSound;
    folder.Write("vexa/sounds/moved.xml", moved.replace(moved.find("x<"), 1, "x*a*2"));
    const std::vector<MidiMessage> tune{{100, {0x90, 69, 100}}, {110, {0x91, 69, 100}},
                                        {120, {0x92, 57, 100}}, {200, {0xE0, 127, 127}},
                                        {300, {0xB2, 16, 127}}, {700, {0xB2, 123, 0}},
                                        {800, {0xC2, 0}},       {810, {0x92, 60, 100}},
                                        {1300, {0x80, 69, 0}},  {1500, {0x82, 57, 0}}};
    const std::vector<std::string> sounds{"--sound",         "0",       "--channel-sound", "2=wide",
                                          "--channel-sound", "3=moved", "--programs"};
    const auto render = [&](std::vector<std::string> options) {
        options.insert(options.begin(), sounds.begin(), sounds.end());
        return Render(tune, options);
    };
    std::vector<float> leftSum, rightSum;
    for (const char* alone : {"1", "2", "3"}) {
        render({"--channel", alone});
        EXPECT_EQ(channels, alone[0] == '2' ? 2U : 1U);
        leftSum.resize(std::max(leftSum.size(), left.size()));
        rightSum.resize(leftSum.size());
        std::ranges::transform(left, leftSum, leftSum.begin(), std::plus());
        std::ranges::transform(right, rightSum, rightSum.begin(), std::plus());
    }
    EXPECT_THAT(render({}), HasSubstr("4 notes, at most 3 voices at once"));
    EXPECT_EQ(channels, 2U);
    EXPECT_EQ(left, leftSum);
    EXPECT_EQ(right, rightSum);
    EXPECT_GT(Level(0.25, 3 * 880), 0.2) << "channel 1, bent by an octave";
    EXPECT_GT(Level(0.25, 440), 0.1) << "channel 2, bent by none";
    EXPECT_GT(Level(0.4, 220), 0.4) << "channel 3, whose macro a is 1";
    EXPECT_LT(Level(0.75, 220), 0.01) << "channel 3 has ended";
    EXPECT_GT(Level(0.75, 440), 0.1) << "channel 2 has not";
    EXPECT_GT(Level(0.85, 3 * 261.6256), 0.2) << "channel 3 has another sound";

    // On a single instrument "all notes off" (123) applies to all channels.
    render({"--channel", "2"});
    const std::vector<float> wide(right.begin(), right.begin() + 30000);
    Render(tune, {"--sound", "wide", "--channel", "2"});
    right.resize(30000);
    EXPECT_EQ(right, wide);
}

/// Plays like an MPE controller: its configuration, the bend range of each member, channels in
/// rotation, bend, 74 and pressure before and during each note, and bends that continue after it.
/// In the formula a note's pressure sets the level of its octave, and its 74 that of the twelfth.
TEST_F(Tune, NotesOfAnMpeControllerAreFoundInTheFile) {
    std::string sound = test::kSineSound;
    const std::string plain = "x</expression>";
    sound.replace(sound.find(plain), plain.size(),
                  "x+a*(2*x*x-1)+b*x*(4*x*x-3)</expression>"
                  "<macros><actl>2</actl><bctl>74</bctl></macros>");
    sound.insert(sound.rfind('<'), "<playing><pressure>2</pressure></playing>");
    folder.Write("vexa/sounds/mpe.xml", sound);
    std::vector<MidiMessage> tune;
    const auto send = [&tune](int at, int status, int channel, int data1, int data2) {
        tune.push_back({at, {uint8(status | channel), uint8(data1), uint8(data2)}});
        if (status == 0xD0)
            tune.back().bytes.pop_back();
    };
    const auto parameter = [&](int channel, int number, int value) {
        for (const auto& [controller, data] :
             {std::pair{101, 0}, {100, number}, {6, value}, {101, 127}, {100, 127}})
            send(0, 0xB0, channel, controller, data);
    };
    const auto bend = [&](int at, int channel, int value) {
        send(at, 0xE0, channel, (value + 8192) & 127, (value + 8192) >> 7);
    };
    parameter(0, 6, 15);
    for (int channel = 1; channel < 16; channel++)
        parameter(channel, 0, 24);
    struct Note {
        double second, hertz, pressure, timbre;
    };
    std::vector<Note> notes;
    std::mt19937 random(4);
    const auto below = [&random](int n) { return int(random() % unsigned(n)); };
    for (int i = 0; i < 20; i++) {
        const int channel = 1 + i % 15, start = 100 + 600 * i;
        // No partials of simultaneous notes coincide.
        const int key = 48 + i * 11 % 25, bent = below(340) - 170;
        const int pressure = below(128), timbre = below(128);
        bend(start, channel, bent);
        send(start, 0xB0, channel, 74, 64);
        send(start, 0xD0, channel, 0, 0);
        send(start, 0x90, channel, key, 40 + below(80));
        send(start + 20, 0xD0, channel, pressure, 0);
        send(start + 20, 0xB0, channel, 74, timbre);
        send(start + 1800, 0x80, channel, key, 64);
        for (int k = 1; k < 5; k++)
            bend(start + 1800 + 5 * k, channel, bent + 100 * k);
        const double semitones = key - 69 + 24.0 * bent / (bent > 0 ? 8191 : 8192);
        notes.push_back({(start + 60) / 1000.0, 440 * std::exp2(semitones / 12), pressure / 127.0,
                         timbre / 127.0});
    }
    Render(tune, {"--sound", "mpe"});
    for (const Note& note : notes) {
        SCOPED_TRACE(note.second);
        EXPECT_NEAR(Cents(note.second, note.hertz), 0, 0.1);
        // By then the next note has sent its own controllers.
        const double later = note.second + 0.6, level = Level(later, note.hertz);
        EXPECT_NEAR(level, 0.25, 0.02);
        EXPECT_NEAR(Level(later, 2 * note.hertz) / level, note.pressure, 0.05);
        EXPECT_NEAR(Level(later, 3 * note.hertz) / level, note.timbre, 0.05);
    }
}

} // namespace
