// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults of vexa-render as a user runs it.
#include "kits/support/SupportDefs.h"
#include "render/RenderProgram.h"
#include "support/Command.h"
#include "support/Environment.h"
#include "support/Limits.h"
#include "support/MidiFiles.h"
#include "support/Pictures.h"
#include "support/SoundFiles.h"
#include "support/Sounds.h"
#include "support/Spectrum.h"
#include "support/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using test::CommandResult;
using test::Contents;
using test::kProgram;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string kDemo = VEXA_PROGRAM_FOLDER "/demo.mid";

class RenderProgram : public testing::Test {
  protected:
    CommandResult Run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), kProgram);
        return test::RunCommand(std::move(arguments));
    }
    std::string Path(const std::string& name) const { return (folder.Path() / name).string(); }

    /// A MIDI file of one note of a quarter of a second on channel 1.
    std::string OneNote(uchar note = 69) const {
        return folder
            .Write("note.mid", test::MidiFileOf({{0, {0x90, note, 100}}, {250, {0x80, note, 0}}}))
            .string();
    }
    /// Returns the samples of a WAV file in the written format: 32-bit floats in the data chunk.
    std::vector<float> Samples(const std::string& path) const {
        const std::string bytes = Contents(path);
        const std::size_t data = bytes.find("data");
        std::vector<float> samples((bytes.size() - data - 8) / sizeof(float));
        std::memcpy(samples.data(), bytes.data() + data + 8, samples.size() * sizeof(float));
        return samples;
    }
    /// Expects a failure with that message which leaves neither an output nor any other file.
    void ExpectFailure(const std::vector<std::string>& arguments, const std::string& text,
                       int exitCode = 1) {
        const std::size_t before = folder.Count();
        const CommandResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, exitCode) << result.text;
        EXPECT_THAT(result.text, HasSubstr(text));
        EXPECT_EQ(folder.Count(), before) << "something was left behind";
    }

    test::TemporaryFolder folder;
};

TEST_F(RenderProgram, RendersTheDemoTuneInLittleMemory) {
    const CommandResult result = Run({kDemo, Path("demo.flac")});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.text, HasSubstr("899 notes"));
    EXPECT_EQ(folder.Count(), 1U);
    if (!test::kSanitized) {
        EXPECT_LT(result.memory, 40'000'000);
    }
}

TEST_F(RenderProgram, IsTheSameBytesOnEveryRunAndForEveryBlock) {
    for (const char* ending : {"wav", "flac", "ogg"}) {
        const std::string a = Path(std::string("a.") + ending);
        const std::string b = Path(std::string("b.") + ending);
        ASSERT_EQ(Run({OneNote(), a, "--quiet", "--tail", "1"}).exitCode, 0);
        ASSERT_EQ(Run({OneNote(), b, "--quiet", "--tail", "1", "--block", "77"}).exitCode, 0);
        EXPECT_TRUE(Contents(a) == Contents(b)) << ending;
        EXPECT_GT(Contents(a).size(), 1000U);
    }
}

TEST_F(RenderProgram, PlaysTheNoteOfTheFileAtItsPitchAndRate) {
    const CommandResult result = Run({OneNote(69), Path("a.wav"), "--function", "x", "--rate",
                                      "48000", "--tail", "0.5", "--gain", "1"});
    ASSERT_EQ(result.exitCode, 0) << result.text;
    EXPECT_THAT(result.text, HasSubstr("1 note,"));
    const std::vector<float> samples = Samples(Path("a.wav"));
    EXPECT_EQ(samples.size(), 36000U);
    const std::span<const float> held(samples.data(), 6000);
    const double level = test::Amplitude(held, 440, 48000);
    EXPECT_GT(level, 0.1);
    EXPECT_LT(test::Amplitude(held, 660, 48000), level / 50);
    EXPECT_LT(std::abs(samples.back()), 0.001) << "released";
}

TEST_F(RenderProgram, PlaysByScalaFilesOrSaysWhichLineIsWrong) {
    const std::string scale = folder.Write("fifths.scl", "fifths\n1\n3/2\n").string();
    const std::string map = folder.Write("two.kbm", "2\n0\n127\n69\n69\n500\n1\n0\nx\n").string();
    const auto level = [&](uchar note, double hertz, std::vector<std::string> options) {
        options.insert(options.begin(), {OneNote(note), Path("a.wav"), "--function", "x", "--tail",
                                         "0", "--gain", "1"});
        const CommandResult result = Run(options);
        EXPECT_EQ(result.exitCode, 0) << result.text;
        return test::Amplitude(std::span<const float>(Samples(Path("a.wav"))).first(6000), hertz,
                               44100);
    };
    EXPECT_GT(level(70, 660, {"--tuning", scale}), 0.1);
    EXPECT_GT(level(71, 750, {"--tuning", scale, "--keymap", map}), 0.1);
    EXPECT_EQ(level(70, 612, {"--tuning", scale, "--keymap", map}), 0) << "left out";
    EXPECT_GT(level(71, 600, {"--tuning", scale, "--keymap", map, "--a4", "400"}), 0.1);
    EXPECT_GT(level(81, 800, {"--a4", "400"}), 0.1);

    const std::string bad = folder.Write("bad.scl", "none\n0\n").string();
    ExpectFailure({OneNote(), Path("b.wav"), "--tuning", bad},
                  "vexa-render: " + bad + ":2: expected the number of notes");
    ExpectFailure({OneNote(), Path("b.wav"), "--keymap", bad}, bad + ":1: expected the size");
    ExpectFailure({OneNote(), Path("b.wav"), "--a4", "1e9"}, "a number from 1 to 20000", 2);
}

TEST_F(RenderProgram, ChannelVoicesAndNormalizeDoWhatTheySay) {
    const CommandResult silent =
        Run({OneNote(), Path("a.wav"), "--channel", "2", "--tail", "0", "--quiet"});
    EXPECT_EQ(silent.exitCode, 0);
    EXPECT_EQ(silent.text, "vexa-render: warning: --channel 2: there is no note on that channel\n");
    EXPECT_EQ(Run({OneNote(), Path("b.wav"), "--channel", "1", "--tail", "0", "--quiet"}).text, "");
    for (const float sample : Samples(Path("a.wav")))
        ASSERT_EQ(sample, 0) << "the note is on channel 1";

    const CommandResult normalized =
        Run({OneNote(), Path("b.wav"), "--gain", "0.01", "--normalize", "--tail", "0.2"});
    EXPECT_THAT(normalized.text, HasSubstr("peak 1.000"));
    float peak = 0;
    for (const float sample : Samples(Path("b.wav")))
        peak = std::max(peak, std::abs(sample));
    EXPECT_NEAR(peak, 1, 1e-6);
    EXPECT_EQ(folder.Count(), 3U) << "and leaves no temporary file";

    const CommandResult one = Run({kDemo, Path("c.wav"), "--voices", "1", "--tail", "0"});
    EXPECT_THAT(one.text, HasSubstr("at most 1 voice at once"));
    EXPECT_THAT(one.text, testing::Not(HasSubstr(" 0 stolen")));
}

TEST_F(RenderProgram, ASpreadGivesTwoChannelsThatFarApart) {
    // On the plane f = x a note is the cosine of the orbit's phase.
    for (const char* name : {"a.wav", "a.flac", "a.ogg"}) {
        for (const char* degrees : {"0", "60"}) {
            const CommandResult result =
                Run({OneNote(), Path(name), "--function", "x", "--normalize", "--tail", "0",
                     "--oversample", "4", "--spread", degrees});
            ASSERT_EQ(result.exitCode, 0) << result.text;
            EXPECT_THAT(result.text, HasSubstr("peak 1.000"));
            const test::DecodedSound sound = test::ReadSound(Path(name), 0);
            ASSERT_EQ(sound.channels, degrees[0] == '6' ? 2U : 1U);
            if (sound.channels == 1)
                continue;
            std::vector<float> left, sum, difference;
            for (std::size_t i = 8000; i < 20000; i += 2) {
                left.push_back(sound.values[i]);
                sum.push_back(sound.values[i] + sound.values[i + 1]);
                difference.push_back(sound.values[i] - sound.values[i + 1]);
            }
            const double level = test::Amplitude(left, 440, 44100);
            EXPECT_GT(level, 0.3);
            EXPECT_NEAR(test::Amplitude(sum, 440, 44100) / level, std::sqrt(3), 0.02) << name;
            EXPECT_NEAR(test::Amplitude(difference, 440, 44100) / level, 1, 0.02) << name;
        }
    }
}

TEST_F(RenderProgram, ASampleCanReplaceTheFunction) {
    const std::string sample = VEXA_PROGRAM_FOLDER "/samples/voice.wav";
    const CommandResult result =
        Run({OneNote(), Path("a.wav"), "--sample", sample, "--sample-frequency", "220"});
    EXPECT_EQ(result.exitCode, 0) << result.text;
    EXPECT_THAT(result.text, testing::Not(HasSubstr("silence")));
    EXPECT_THAT(result.text, testing::Not(HasSubstr("warning")));
    ExpectFailure({OneNote(), Path("b.wav"), "--sample-frequency", "220"}, "--sample-frequency", 2);
    const std::string cut = folder.Write("cut.wav", Contents(sample).substr(0, 5000)).string();
    const CommandResult part = Run({OneNote(), Path("c.wav"), "--sample", cut});
    EXPECT_EQ(part.exitCode, 0) << part.text;
    EXPECT_THAT(part.text,
                HasSubstr("vexa-render: warning: --sample: " + cut + ": the file ends after "));
}

/// The names in the documents lack only the folder "pictures".
TEST_F(RenderProgram, APictureCanReplaceTheFunctionOrBeTheSounds) {
    // Columns of black and white.
    std::vector<png_byte> pixels(64 * 64);
    for (std::size_t i = 0; i < pixels.size(); i++)
        pixels[i] = i % 64 / 4 % 2 ? 255 : 0;
    const std::string picture = folder.Write("pictures/bars.png", test::Png(64, 64, {}, pixels));
    const CommandResult result = Run({OneNote(), Path("a.wav"), "--picture", picture});
    EXPECT_EQ(result.exitCode, 0) << result.text;
    EXPECT_GT(test::Peak(Samples(Path("a.wav"))), 0.01F);
    std::string text = Contents(VEXA_PROGRAM_FOLDER "/sounds/default.xml");
    const std::size_t begin = text.find("<vexafunction>");
    const std::size_t end = text.find("</vexafunction>") + 15;
    text.replace(begin, end - begin,
                 "<vexapicturefunction><picturefile>" + picture +
                     "</picturefile></vexapicturefunction>");
    folder.Write("sound.xml", text);
    EXPECT_EQ(Run({OneNote(), Path("b.wav"), "--sound", Path("sound.xml")}).exitCode, 0);
    EXPECT_EQ(Contents(Path("b.wav")), Contents(Path("a.wav")));
    folder.Write("pictures/bars.png", "GIF89a");
    ExpectFailure({OneNote(), Path("c.wav"), "--sound", Path("sound.xml")},
                  "bars.png: it is neither PNG nor JPEG");
    for (const char* other : {"--function=x", "--sample=a.wav", "--sample-frequency=1"})
        ExpectFailure({OneNote(), Path("c.wav"), "--picture", picture, other}, "exclude", 2);
}

/// What the document's reader tells with its line, the instrument does not tell again.
TEST_F(RenderProgram, AnInvalidSampleFrequencyIsToldOnce) {
    const auto warnings = [&](const std::string& frequency) {
        const std::string sound =
            folder
                .Write("sound.xml",
                       "<vexasound><vexasamplefunction><samplefile>" VEXA_PROGRAM_FOLDER
                       "/samples/voice.wav</samplefile>\n<frequency>" +
                           frequency + "</frequency></vexasamplefunction></vexasound>")
                .string();
        const CommandResult result = Run({OneNote(), Path("a.wav"), "--sound", sound});
        EXPECT_EQ(result.exitCode, 0) << result.text;
        std::vector<std::string> lines;
        std::istringstream text(result.text);
        const std::string name = "vexa-render: warning: " + sound;
        for (std::string line; std::getline(text, line);) {
            if (line.starts_with(name) && line.find("frequency") != line.npos)
                lines.push_back(line.substr(name.size()));
        }
        return lines;
    };
    EXPECT_THAT(warnings("none"),
                ElementsAre(":2:1: <frequency>: expected a frequency above 0, found \"none\""));
    EXPECT_THAT(warnings("1e-37"), ElementsAre(HasSubstr("a sample frequency of \"1e-37\" Hz")));
    EXPECT_THAT(warnings("440"), ElementsAre());
}

TEST_F(RenderProgram, MacrosAreTheSoundsOrTheCommandLines) {
    const std::string sound = folder.Path() / "sound.xml";
    std::string text = Contents(VEXA_PROGRAM_FOLDER "/sounds/default.xml");
    const std::size_t end = text.find("</vexafunction>");
    ASSERT_NE(end, text.npos);
    text.insert(end, "<macros><b>0.25</b></macros>");
    folder.Write("sound.xml", text);
    const auto peak = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {OneNote(), Path("a.wav"), "--sound", sound, "--function",
                                   "b*cos(x)*sin(y)", "--compile"});
        const CommandResult result = Run(more);
        EXPECT_EQ(result.exitCode, 0) << result.text;
        return test::Peak(Samples(Path("a.wav")));
    };
    const float quarter = peak({});
    EXPECT_GT(quarter, 0.001F);
    EXPECT_NEAR(peak({"--macro", "b=1", "--macro", "a=0"}), 4 * quarter, 0.01F * quarter);
    EXPECT_EQ(peak({"--macro", "b=0"}), 0);
    for (const char* wrong : {"e=0.5", "a=2", "a", "a=", "b=nan"})
        ExpectFailure({OneNote(), Path("b.wav"), "--macro", wrong}, "--macro", 2);
}

TEST_F(RenderProgram, AFunctionThatOverflowsIsHeardWithAWarning) {
    for (const char* function : {"exp(75*x)", "pow(tan(3*x),16)", "tgamma(30*x)"}) {
        const CommandResult result = Run({kDemo, Path("a.wav"), "--function", function});
        EXPECT_EQ(result.exitCode, 0) << result.text;
        const std::vector<float> samples = Samples(Path("a.wav"));
        // The last quarter of the tune.
        EXPECT_GT(test::Peak(std::span(samples).last(samples.size() / 4)), 1) << function;
        EXPECT_TRUE(std::ranges::all_of(samples, [](float s) { return std::isfinite(s); }));
        if (function == std::string("exp(75*x)")) {
            EXPECT_THAT(result.text, HasSubstr("beyond 1e30"));
        }
    }
}

/// Without a fade the file would end with a click, in the middle of a tone.
TEST_F(RenderProgram, NotesThatTheFileNeverEndsFadeOutWithAWarning) {
    const std::string sound = folder.Write("sine.xml", test::kSineSound).string();
    const auto render = [&](const std::vector<test::MidiMessage>& events,
                            std::vector<std::string> options) {
        const std::string midi = folder.Write("held.mid", test::MidiFileOf(events)).string();
        options.insert(options.begin(), {midi, Path("a.wav"), "--sound", sound, "--quiet"});
        const CommandResult result = Run(options);
        EXPECT_EQ(result.exitCode, 0);
        return result.text;
    };
    const auto peak = [&](std::size_t from, std::size_t count) {
        const std::vector<float> samples = Samples(Path("a.wav"));
        return test::Peak(std::span(samples).last(from).first(count));
    };
    const auto warning = [](const std::string& notes) {
        return HasSubstr("vexa-render: warning: " + notes +
                         " held at the end, by a key or a pedal that the file never lets go, and "
                         "faded out there; --tail says how long they last\n");
    };
    const auto none = testing::Not(HasSubstr("at the end"));
    const test::MidiMessage on{0, {0x90, 69, 100}}, off{250, {0x80, 69, 0}};

    EXPECT_THAT(render({on, {10, {0x91, 73, 100}}}, {}), warning("2 notes are"));
    EXPECT_GT(peak(4900, 400), 0.8 * peak(10000, 4000)) << "not earlier than needed";
    EXPECT_LT(peak(500, 500), 0.2 * peak(10000, 4000));
    EXPECT_LT(peak(1, 1), 1e-3);

    const std::vector<test::MidiMessage> pedalled = {{0, {0xB0, 64, 127}}, on, off};
    EXPECT_THAT(render(pedalled, {"--pedal", "true", "--tail", "0.05", "--spread", "90"}),
                warning("1 note is"));
    EXPECT_LT(peak(2, 2), 1e-3) << "both ears";
    EXPECT_THAT(render(pedalled, {}), none) << "the sound has no pedal";
    EXPECT_THAT(render({on, {250, {0xB0, 123, 0}}}, {}), none) << "all notes off";
    // Where there is no tail, or one that is too short for the fade, the tune's own end fades.
    EXPECT_THAT(render({on, off}, {"--tail", "0"}), none);
    EXPECT_GT(peak(900, 400), 0.8 * peak(5000, 4000));
    EXPECT_LT(peak(1, 1), 0.01 * peak(5000, 4000)) << "in the middle of a tone";
    EXPECT_THAT(render({{250, {0x90, 73, 100}}}, {"--tail", "0.1"}), warning("1 note is"))
        << "begun where the fade begins";
    EXPECT_THAT(render({on, {250, {0x80, 73, 0}}}, {"--tail", "0"}), warning("1 note is"));
    EXPECT_LT(peak(1, 1), 0.01 * peak(5000, 4000));
}

TEST_F(RenderProgram, BadInputIsNamedAndNothingIsLost) {
    const std::string out = Path("out.wav");
    const std::string good = OneNote();
    ExpectFailure({Path("none.mid"), out}, "none.mid: No such file or directory");
    ExpectFailure({good, Path("out.mp3")},
                  "out.mp3: the name of a sound file ends in one of .wav, .flac, .ogg\n"
                  "Usage: ",
                  2);
    ExpectFailure({good, "/none/out.wav"}, "/none/out.wav");
    ExpectFailure({good, out, "--sound", Path("none.xml")}, "none.xml");
    ExpectFailure({good, out, "--channel-sound", "2=none"},
                  "--channel-sound 2=none: there is no file none");
    const std::string empty = folder.Write("empty.xml", "").string();
    ExpectFailure({good, out, "--sound", empty}, "empty.xml");
    const std::string foo = folder.Write("foo.xml", "<foo><a/></foo>").string();
    ExpectFailure({good, out, "--sound", foo},
                  "foo.xml:1:1: This is not a valid sound. (expected an element <vexafunction>");
    const std::string bad =
        folder
            .Write("bad.xml", "<vexasound><vexafunction><expression>x+</expression>"
                              "</vexafunction></vexasound>")
            .string();
    ExpectFailure({good, out, "--channel-sound", "2=" + bad},
                  "vexa-render: --channel-sound 2=" + bad + ": " + bad + ": <expression>: ");
    ExpectFailure({good, out, "--sound", bad},
                  "vexa-render: " + bad + ": <expression>: character 3: ");
    EXPECT_THAT(Run({good, Path("on1.wav"), "--channel-sound", "2=bell"}).text,
                HasSubstr("warning: --channel-sound 2=bell: there is no note on that channel"));
    ExpectFailure({good, out, "--sound", "/dev/random"}, "/dev/random: it is a device, not a file");
    // Without words about a compiler that has not run.
    std::string costly = "x";
    for (int i = 0; i < 200; i++)
        costly += "+jn(50,x+" + std::to_string(i) + ")";
    for (const auto& more : {std::vector<std::string>{}, {"--compile"}}) {
        const auto refusal = [&](const std::string& function) {
            std::vector<std::string> arguments{good, out, "--function", function};
            arguments.insert(arguments.end(), more.begin(), more.end());
            const CommandResult result = Run(arguments);
            EXPECT_EQ(result.exitCode, 1);
            return result.text;
        };
        EXPECT_EQ(refusal("2x"), "vexa-render: --function: character 1: \"2x\" is not a number\n"
                                 "to multiply write 2*x\n");
        EXPECT_THAT(refusal(costly), StartsWith("vexa-render: --function: the function takes "));
        EXPECT_THAT(refusal("system(1)"), HasSubstr("system"));
    }
    ExpectFailure({good, out, "--sample", good}, "note.mid");
    ExpectFailure({good}, "no output", 2);

    const fs::path old = folder.Write("old.wav", "precious");
    ExpectFailure({good, old.string(), "--function", "x+"}, "character 3");
    EXPECT_EQ(Contents(old), "precious");
}

TEST_F(RenderProgram, RefusesAnInstructionSetThatTheMachineDoesNotHave) {
    for (const char* set : {"", "avx3", "Baseline"}) {
        const test::EnvironmentVariable asked("VEXA_INSTRUCTION_SET", set);
        ExpectFailure({OneNote(), Path("a.wav")}, std::string("VEXA_INSTRUCTION_SET is \"") + set +
                                                      "\"; this machine has baseline");
    }
}

/// A pipe is refused where a file is needed. A tune may come from a pipe; if nothing comes, a
/// signal ends the program at once.
TEST_F(RenderProgram, APipeIsRefusedOrMayBeWaitedFor) {
    const std::string pipe = Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string note = OneNote();
    const std::size_t before = folder.Count();
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        const char* text;
    } cases[] = {
        {{pipe, Path("a.wav")}, 128 + SIGTERM, ""},
        {{note, Path("a.wav"), "--sound", pipe}, 1, "pipe: it is a pipe, not a file"},
        {{note, Path("a.wav"), "--sample", pipe}, 1, "pipe: it is a pipe, not a file"},
        {{note, pipe + ".wav"}, 1, "pipe: it is a pipe, not a file"},
    };
    fs::create_symlink("pipe", pipe + ".wav");
    for (const bool hasWriter : {false, true}) {
        const int writer = hasWriter ? ::open(pipe.c_str(), O_RDWR | O_CLOEXEC) : -1;
        for (const auto& [arguments, exitCode, text] : cases) {
            std::vector<std::string> command = arguments;
            command.insert(command.begin(), kProgram);
            bool lingered = false;
            const CommandResult result = test::RunCommand(command, [&](pid_t child) {
                EXPECT_TRUE(exitCode == 1 ||
                            !test::EndsWithin(child, std::chrono::milliseconds(300)));
                ::kill(child, exitCode == 1 ? 0 : SIGTERM);
                lingered = !test::EndsWithin(child, std::chrono::seconds(30));
                ::kill(child, SIGKILL);
            });
            EXPECT_FALSE(lingered) << arguments.back();
            EXPECT_EQ(result.exitCode, exitCode) << result.text;
            EXPECT_THAT(result.text, HasSubstr(text));
            EXPECT_EQ(folder.Count(), before + 1);
        }
        ::close(writer);
    }
}

TEST_F(RenderProgram, MoreThanAWavFileHoldsIsRenderedAllTheSame) {
    // 4 bytes times 768000 Hz times 1500 s are 4.6 GB. A signal leaves nothing of them behind.
    const std::string note = OneNote();
    const fs::path old = folder.Write("a.wav", "precious");
    std::string head;
    const auto lookAndInterrupt = [&](pid_t child) {
        for (int i = 0; i < 10'000 && head.size() < 4; i++) {
            for (const auto& entry : fs::directory_iterator(folder.Path())) {
                if (entry.path().filename().string().starts_with(".vexa-"))
                    head = Contents(entry.path()).substr(0, 4);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        ::kill(child, SIGINT);
    };
    const CommandResult result = test::RunCommand(
        {kProgram, note, old.string(), "--rate", "768000", "--tail", "1500"}, lookAndInterrupt);
    EXPECT_EQ(result.exitCode, 128 + SIGINT) << result.text;
    EXPECT_EQ(head, "RF64");
    EXPECT_THAT(result.text, HasSubstr("interrupted"));
    EXPECT_EQ(Contents(old), "precious");
    EXPECT_EQ(folder.Count(), 2U);
}

/// By its option, or installed, where content lies beside the programs' folder.
TEST_F(RenderProgram, WhatIsTheUsersIsInTheUsersFolderAndShippedContentIsOnlyRead) {
    const fs::path program = folder.Path() / "bin";
    fs::create_directory(program);
    fs::copy(kProgram, program);
    fs::copy(VEXA_SOURCE_FOLDER "/data", program, fs::copy_options::recursive);
    fs::copy(VEXA_PROGRAM_FOLDER "/samples", program / "samples");
    fs::path content = program;
    const std::string note = OneNote();
    const auto render = [&](std::vector<std::string> options) {
        options.insert(options.begin(), {program / "vexa-render", note, Path("out.wav"), "--tail",
                                         "0", "--compile"});
        return test::RunCommand(std::move(options));
    };
    const test::EnvironmentVariable data("XDG_DATA_HOME", Path("data").c_str());
    const fs::path own = folder.Path() / "data/vexa";
    for (const bool installed : {false, true}) {
        const std::vector<std::string> option(installed ? 0 : 1, "--user-folder");
        const auto with = [&option](std::vector<std::string> more) {
            more.insert(more.end(), option.begin(), option.end());
            return more;
        };
        if (installed) {
            content = folder.Path() / "share/vexa/shipped";
            fs::create_directories(content.parent_path());
            fs::rename(program, content);
            fs::create_directory(program);
            fs::rename(content / "vexa-render", program / "vexa-render");
        }
        ASSERT_EQ(render(with({"--sound", "harp"})).exitCode, 0);
        EXPECT_GT(test::Peak(Samples(Path("out.wav"))), 0.001F);
        fs::copy_file(VEXA_SOURCE_FOLDER "/data/shipped-content", content / "shipped-content",
                      fs::copy_options::overwrite_existing);
        const fs::path silent = folder.Write("data/vexa/sounds/bell.xml",
                                             "<vexasound><vexafunction><expression>0</expression>"
                                             "</vexafunction></vexasound>");
        ASSERT_EQ(render(with({"--sound", "bell"})).exitCode, 0);
        EXPECT_EQ(test::Peak(Samples(Path("out.wav"))), 0);
        EXPECT_TRUE(fs::exists(own / "functions/recent"));
        // As if an older version had shipped it.
        std::ofstream(content / "shipped-content", std::ios::app)
            << test::RunCommand({"sha256sum", silent}).text.substr(0, 64) << "  sounds/bell.xml\n";
        ASSERT_EQ(render(with({"--sound", "bell"})).exitCode, 0);
        EXPECT_GT(test::Peak(Samples(Path("out.wav"))), 0.001F);
        const CommandResult missing = render(with({"--sound", "bel"}));
        EXPECT_EQ(missing.exitCode, 1);
        EXPECT_THAT(missing.text, HasSubstr((own / "sounds").string()));
        EXPECT_THAT(missing.text, HasSubstr((content / "sounds").string()));
        EXPECT_FALSE(fs::exists(content / "functions/recent"));
        fs::remove_all(folder.Path() / "data");
    }
    // A program outside an installation finds all content beside itself.
    fs::rename(program / "vexa-render", content / "vexa-render");
    fs::remove(program);
    fs::rename(content, program);
    ASSERT_EQ(render({"--sound", "bell", "--function", "x*y"}).exitCode, 0);
    EXPECT_TRUE(fs::exists(program / "functions/recent"));
    EXPECT_FALSE(fs::exists(own));
}

/// Neither one that cannot be made nor one that could be.
TEST_F(RenderProgram, NeedsNoFolderOfTheUsers) {
    const std::string note = OneNote();
    folder.Write("taken", "");
    for (const char* home : {"taken", "new"}) {
        const test::EnvironmentVariable data("XDG_DATA_HOME", Path(home).c_str());
        const CommandResult result =
            Run({note, Path("out.wav"), "--user-folder", "--sound", "bell", "--tail", "0"});
        EXPECT_EQ(result.exitCode, 0) << result.text;
        EXPECT_THAT(result.text, Not(HasSubstr("warning")));
        const CommandResult compiled =
            Run({note, Path("out.wav"), "--user-folder", "--function", "x*y", "--compile"});
        EXPECT_EQ(compiled.exitCode == 0, std::string(home) == "new") << compiled.text;
        EXPECT_EQ(fs::exists(folder.Path() / "new/vexa/functions/recent"), compiled.exitCode == 0);
        EXPECT_FALSE(fs::exists(folder.Path() / "new/vexa/sounds"));
    }
}

/// Whatever the name by which the output leads to an input.
TEST_F(RenderProgram, AnOutputThatIsAnInputIsRefusedAndTheInputStays) {
    const std::string note = OneNote();
    const std::string sound = Contents(VEXA_PROGRAM_FOLDER "/sounds/default.xml");
    const std::string sample = test::ShortWav(std::vector<int>(2000, 9000), 44100, 1);
    const std::string scale = "!\n\n 12\n!\n";
    const struct {
        const char* option;
        std::string before, bytes, told;
    } cases[] = {
        {"", "", Contents(note), "MIDI: "},
        {"--sound", "", sound, "--sound: "},
        {"--channel-sound", "3=", sound, "--channel-sound 3: "},
        {"--sample", "", sample, "--sample: "},
        {"--picture", "", "no picture", "--picture: "},
        {"--tuning", "", scale, "--tuning: "},
        {"--keymap", "", scale, "--keymap: "},
    };
    for (const auto& [option, before, bytes, told] : cases) {
        const fs::path input = folder.Write("in.wav", bytes);
        fs::remove(Path("link.wav"));
        fs::create_symlink(input, Path("link.wav"));
        for (const char* output : {"in.wav", "link.wav"}) {
            std::vector<std::string> arguments{*option ? note : input.string(), Path(output)};
            if (*option)
                arguments.insert(arguments.end(), {option, before + input.string()});
            ExpectFailure(arguments, told + input.string() + " is the output's file too", 2);
            EXPECT_TRUE(Contents(input) == bytes) << told;
        }
    }
    // A sound names its sample where the command line does not.
    const fs::path input = folder.Write("in.wav", sample);
    const fs::path named = folder.Write(
        "sound.xml",
        "<vexasound><vexasamplefunction><samplefile>" + input.string() +
            "</samplefile><frequency>440</frequency></vexasamplefunction></vexasound>");
    ExpectFailure({note, input.string(), "--sound", named.string()},
                  named.string() + " plays " + input.string());
    EXPECT_TRUE(Contents(input) == sample);
    EXPECT_EQ(Run({note, Path("other.wav"), "--sound", named.string()}).exitCode, 0);

    // So do the sounds that program changes choose, which are inputs themselves.
    const fs::path chosen = folder.Write("data/vexa/sounds/0.xml", Contents(named));
    const test::EnvironmentVariable data("XDG_DATA_HOME", Path("data").c_str());
    const std::string tune =
        folder.Write("tune.mid", test::MidiFileOf({{0, {0xC0, 0}}, {1, {0x90, 69, 100}}}));
    ExpectFailure({tune, input.string(), "--programs", "--user-folder"},
                  chosen.string() + " plays " + input.string());
    for (const std::string& bytes : {sound, std::string("no sound")}) {
        folder.Write("data/vexa/sounds/0.xml", bytes);
        fs::remove(Path("link.wav"));
        fs::create_symlink(chosen, Path("link.wav"));
        ExpectFailure({tune, Path("link.wav"), "--programs", "--user-folder"},
                      "--programs: " + chosen.string() + " is the output's file too", 2);
        EXPECT_TRUE(Contents(chosen) == bytes);
    }
}

TEST_F(RenderProgram, ASignalThatStopsTheCompilerIsNoFaultOfIt) {
    const fs::path old = folder.Write("out.wav", "precious");
    const fs::path compiler =
        folder.Write("gcc", "#!/bin/sh\n: >'" + Path("runs") + "'\nsleep 60\n");
    fs::permissions(compiler, fs::perms::owner_all);
    const CommandResult stopped =
        test::RunCommand({"/usr/bin/env", "PATH=" + folder.Path().string() + ":/usr/bin:/bin",
                          kProgram, kDemo, old.string(), "--compile", "--function", "x*y"},
                         [this](pid_t child) {
                             while (!fs::exists(Path("runs")) &&
                                    !test::EndsWithin(child, std::chrono::milliseconds(1))) {
                             }
                             ::kill(child, SIGTERM);
                         });
    EXPECT_EQ(stopped.exitCode, 128 + SIGTERM);
    EXPECT_EQ(stopped.text, "vexa-render: interrupted; " + old.string() + " was not written\n");
    EXPECT_EQ(Contents(old), "precious");
}

TEST_F(RenderProgram, AFullDiskIsReported) {
    const fs::path old = folder.Write("out.wav", "precious");
    const std::string note = OneNote();
    test::WithFileSizeLimit(1 << 16, [&] {
        ExpectFailure({note, old.string()}, "out.wav");
        ExpectFailure({note, old.string(), "--normalize"}, "out.wav");
    });
    EXPECT_EQ(Contents(old), "precious");
    // Of standard output too.
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {note, Path("a.wav")}}) {
        std::vector<std::string> command{"/bin/sh", "-c", "\"$0\" \"$@\" >/dev/full", kProgram};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const CommandResult result = test::RunCommand(command);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.text, "vexa-render: could not write to standard output: No space left on "
                               "device\n");
    }
}

TEST_F(RenderProgram, NeedsTemplateAndCompilerOnlyWhereItIsToCompile) {
    const fs::path copy = folder.Path() / "program";
    fs::create_directory(copy);
    fs::copy(kProgram, copy / "vexa-render");
    fs::copy(VEXA_PROGRAM_FOLDER "/sounds", copy / "sounds");
    fs::create_directory(copy / "functions");
    const std::string note = OneNote();
    const CommandResult missing = test::RunCommand(
        {(copy / "vexa-render").string(), note, Path("a.wav"), "--compile", "--function", "x*y"});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_THAT(missing.text, HasSubstr("The template file \n" + copy.string()));

    const CommandResult bare = test::RunCommand({"/usr/bin/env", "PATH=/none", kProgram, note,
                                                 Path("a.wav"), "--compile", "--function", "x*y"});
    EXPECT_EQ(bare.exitCode, 1);
    EXPECT_THAT(bare.text, HasSubstr("gcc"));
    EXPECT_FALSE(fs::exists(Path("a.wav")));

    const CommandResult formula = test::RunCommand(
        {"/usr/bin/env", "PATH=/none", (copy / "vexa-render").string(), note, Path("a.wav")});
    EXPECT_EQ(formula.exitCode, 0) << formula.text;
    EXPECT_EQ(Run({note, Path("b.wav"), "--compile", "--function", "x*y"}).exitCode, 0);
    EXPECT_TRUE(fs::exists(Path("b.wav")));
}

TEST_F(RenderProgram, SaysWhichFunctionsItDoesNotCompileThoughItIsAskedTo) {
    std::string text = Contents(VEXA_PROGRAM_FOLDER "/sounds/default.xml");
    const std::size_t begin = text.find("<expression>") + 12;
    text.replace(begin, text.find("</expression>") - begin, "x*vel");
    const std::string sound = folder.Write("sound.xml", text).string();
    const auto warnings = [&](std::vector<std::string> more) {
        more.insert(more.begin(), {OneNote(), Path("a.wav"), "--tail", "0", "--quiet"});
        const CommandResult result = Run(std::move(more));
        EXPECT_EQ(result.exitCode, 0) << result.text;
        return result.text;
    };
    const std::string ofSound = "vexa-render: warning: --compile: the function of " + sound +
                                " is not compiled: it uses more than x and y\n";
    // Once, however many channels have the sound.
    EXPECT_EQ(warnings({"--compile", "--sound", sound, "--channel-sound", "1=" + sound}), ofSound);
    EXPECT_EQ(warnings({"--sound", sound}), "");
    EXPECT_EQ(warnings({"--compile", "--function", "x*y"}), "");
    EXPECT_EQ(warnings({"--compile", "--function", "a*x"}),
              "vexa-render: warning: --compile: --function is not compiled: it uses more than x "
              "and y\n");
    EXPECT_THAT(warnings({"--compile", "--function", "1<<(int)x"}),
                HasSubstr("--function is not compiled: C does not define all of its values\n"));
    // Of what is compiled and what is not.
    for (const char* product : {"1/3*vel", "1/3*x+1e999"}) {
        const std::string told = warnings({"--compile", "--function", product});
        EXPECT_THAT(told, HasSubstr("warning: --function: character 2: 1/3 is 0, "));
        // What the compiler says follows.
        EXPECT_EQ(told.find("[-Woverflow]") != told.npos, std::string(product).ends_with("1e999"));
    }
    EXPECT_THAT(warnings({"--compile", "--sound", "voice"}),
                HasSubstr("/voice.xml is not compiled: it is a sample\n"));
    // Of the sounds that program changes choose too.
    folder.Write("data/vexa/sounds/0.xml", text);
    const test::EnvironmentVariable data("XDG_DATA_HOME", Path("data").c_str());
    const std::string chosen =
        folder.Write("chosen.mid", test::MidiFileOf({{0, {0xC0, 0}}, {1, {0x90, 69, 100}}}));
    EXPECT_THAT(Run({chosen, Path("b.wav"), "--compile", "--function", "x", "--programs",
                     "--user-folder", "--tail", "0"})
                    .text,
                HasSubstr("the function of " + Path("data/vexa/sounds/0.xml") +
                          " is not compiled: it uses more than x and y\n"));
}

TEST_F(RenderProgram, CompilesWhereWhoeverStartsItIgnoresTheEndsOfChildren) {
    const CommandResult result =
        test::RunCommand({"/usr/bin/env", "--ignore-signal=CHLD", kProgram, OneNote(),
                          Path("a.wav"), "--quiet", "--compile", "--function", "x*y"});
    EXPECT_EQ(result.exitCode, 0) << result.text;
}

} // namespace
