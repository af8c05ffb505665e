// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Options.h"

#include <iterator>
#include <sstream>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::HasSubstr;
using vexa::Options;

kits::Result<Options> Parse(std::vector<std::string> arguments) {
    return vexa::ParseOptions(arguments);
}

std::vector<std::string> Words(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

/// Returns the message for "in.mid out.wav" with these options.
std::string FaultOfLine(std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), {"in.mid", "out.wav"});
    const auto options = Parse(arguments);
    return options ? "none" : options.Fault().text;
}

TEST(Options, ReadsEveryOptionWhereverItStands) {
    const auto options = Parse(
        Words("--sound a.xml in.mid --function=x*y --voices 3 --channel 16 --rate=48000 "
              "--oversample 4 out.wav --tuning a.scl --keymap b.kbm --a4 442.5 --gain 0.5 "
              "--tail 1e1 --block 64 --normalize --quiet --programs --mode legato --volume -3.5 "
              "--channel-sound 2=b=c"));
    ASSERT_TRUE(options) << options.Fault().text;
    EXPECT_EQ(options->action, Options::Action::Render);
    EXPECT_EQ(options->midi, "in.mid");
    EXPECT_EQ(options->output, "out.wav");
    EXPECT_EQ(options->sound, "a.xml");
    EXPECT_EQ(options->channelSounds[1], "b=c");
    EXPECT_EQ(options->function, "x*y");
    EXPECT_EQ(options->voices, 3);
    EXPECT_EQ(options->channel, 15) << "channel 1 is 0";
    EXPECT_EQ(options->rate, 48000);
    EXPECT_EQ(options->playing.Of("oversample"), "4");
    EXPECT_EQ(options->tuning.scale, "a.scl");
    EXPECT_EQ(options->tuning.keymap, "b.kbm");
    EXPECT_EQ(options->tuning.a4, 442.5);
    EXPECT_EQ(options->gain, 0.5);
    EXPECT_EQ(options->tail, 10);
    EXPECT_EQ(options->block, 64);
    EXPECT_TRUE(options->normalize);
    EXPECT_TRUE(options->programs);
    EXPECT_TRUE(options->quiet);
    EXPECT_EQ(options->playing.Of("mode"), "legato");
    EXPECT_EQ(options->playing.Of("volume"), "-3.5");
    EXPECT_EQ(options->playing.Of("bend"), std::nullopt);

    const auto sample =
        Parse(Words("--sample a.wav --sample-frequency 220.5 --channel all -- --in.mid -out.wav"));
    ASSERT_TRUE(sample) << sample.Fault().text;
    EXPECT_EQ(sample->sample, "a.wav");
    EXPECT_EQ(sample->sampleFrequency, 220.5);
    EXPECT_EQ(sample->channel, -1);
    EXPECT_EQ(sample->midi, "--in.mid");
    EXPECT_FALSE(sample->quiet) << "nothing is left of the command line before";
}

TEST(Options, RefusesValuesOutsideTheirRange) {
    const struct {
        const char* option;
        std::vector<const char*> bad;
        std::vector<const char*> good;
        const char* allowed;
    } rows[] = {
        {"--voices",
         {"0", "21", "-1", "2.5", "", "x", "3 ", "99999999999"},
         {"1", "20"},
         "1 to 20"},
        {"--channel", {"0", "17", "ALL", ""}, {"1", "16", "all"}, "1 to 16 or \"all\""},
        {"--channel-sound",
         {"0=a", "17=a", "a", "=a", "2=", "2 =a", "all=a", ""},
         {"1=a", "16=b=c.xml"},
         "1 to 16, \"=\" and a sound"},
        {"--rate", {"7999", "768001", "44100.5", "nan"}, {"8000", "768000"}, "8000 to 768000"},
        {"--oversample", {"0", "3", "32", "2x"}, {"1", "2", "4", "8", "16"}, "1, 2, 4, 8 or 16"},
        {"--gain", {"-0.1", "1.01", "nan", "inf", "0,5", "1e999"}, {"0", "1", ".5"}, "0 to 1"},
        {"--tail", {"-1", "3601", "nan", "-nan"}, {"0", "3600"}, "0 to 3600"},
        {"--block", {"0", "65537"}, {"1", "65536"}, "1 to 65536"},
        {"--a4",
         {"0", "-440", "nan", "inf", "1e9", "440 Hz", "440,5", ""},
         {"1", "442.5", "20000"},
         "1 to 20000"},
        {"--sample-frequency", {"0", "-1", "inf", "nan"}, {"440", "0.001"}, "0.001 to 1000000"},
    };
    for (const auto& row : rows) {
        for (const char* value : row.bad) {
            const std::string fault = FaultOfLine({row.option, value});
            EXPECT_THAT(fault, HasSubstr(row.option)) << value;
            EXPECT_THAT(fault, HasSubstr(row.allowed)) << value;
            EXPECT_THAT(fault, HasSubstr('"' + std::string(value) + '"'));
        }
        for (const char* value : row.good)
            EXPECT_EQ(FaultOfLine({row.option, value}), "none") << row.option << ' ' << value;
    }
}

TEST(Options, RefusesWrongUsage) {
    EXPECT_EQ(FaultOfLine({"--loud"}), "unknown or ambiguous option --loud");
    EXPECT_EQ(FaultOfLine({"--sam", "a"}), "unknown or ambiguous option --sam");
    EXPECT_EQ(FaultOfLine({"-vx"}), "unknown option -v");
    EXPECT_EQ(FaultOfLine({"--quiet=1"}), "--quiet takes no value");
    EXPECT_EQ(FaultOfLine({"--sound", ""}), "--sound needs a value");
    EXPECT_EQ(FaultOfLine({"--tuning", ""}), "--tuning needs a value");
    EXPECT_EQ(FaultOfLine({"more.mid"}), "\"out.wav\" is one file too many");
    EXPECT_THAT(FaultOfLine({"--function", "x", "--sample", "a.wav"}),
                HasSubstr("exclude each other"));
    EXPECT_THAT(FaultOfLine({"--function", "x", "--sample-frequency", "9"}), HasSubstr("exclude"));
    EXPECT_THAT(FaultOfLine({"--mpe", "--channel-sound", "2=a"}), HasSubstr("exclude each other"));
    EXPECT_EQ(Parse({}).Fault().text, "no MIDI file is named");
    EXPECT_EQ(Parse({"in.mid"}).Fault().text, "no output is named");
    EXPECT_EQ(Parse({"in.mid", ""}).Fault().text, "a file name is empty");
    EXPECT_EQ(Parse({"in.mid", "out.wav", "--rate"}).Fault().text, "--rate needs a value");
}

TEST(Options, HelpNeedsNoFilesAndNamesEveryOption) {
    const auto help = Parse({"--help"});
    ASSERT_TRUE(help);
    EXPECT_EQ(help->action, Options::Action::Help);
    const auto version = Parse({"--version"});
    ASSERT_TRUE(version);
    EXPECT_EQ(version->action, Options::Action::Version);

    const std::string text = vexa::HelpText();
    EXPECT_THAT(text, HasSubstr("--oversample N"));
    EXPECT_THAT(text, HasSubstr("; a whole number from 8000 to 768000\n"));
    std::size_t start = 0;
    for (std::size_t end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1)
        EXPECT_LE(end - start, 100U) << text.substr(start, end - start);
    EXPECT_THAT(vexa::VersionText(),
                testing::MatchesRegex("vexa-render [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

} // namespace
