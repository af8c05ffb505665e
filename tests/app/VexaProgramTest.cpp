// SPDX-License-Identifier: GPL-3.0-or-later
// Catches faults of vexa as a user starts it, without any server.
#include "support/Command.h"
#include "support/Environment.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using test::CommandResult;
using testing::HasSubstr;
using testing::Not;

CommandResult Vexa(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VEXA_PROGRAM_FOLDER "/vexa");
    // No server is found under this name.
    ::setenv("JACK_DEFAULT_SERVER", "vexa-test-none", 1);
    ::setenv("JACK_NO_START_SERVER", "1", 1);
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    ::unsetenv("QT_QPA_PLATFORM");
    return test::RunCommand(std::move(arguments));
}

TEST(VexaProgram, SaysWhatIsWrongWithItsCommandLine) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--voices", "0"}, "--voices takes a whole number from 1 to 20"},
        {{"--channel", "17"}, "--channel"},
        {{"--audio", "oss"}, "jack, pulse, alsa or none"},
        {{"--midi", ""}, "--midi needs a value"},
        {{"--record", "x.mp3"}, "--record takes a name ending in .wav, .flac or .ogg"},
        {{"a.xml", "b.xml"}, "one file can be opened, not 2"},
        {{"--no-window", "a.xml"}, "without a window only a sound plays, given as --sound"},
        {{"--attach", "2"}, "the number of a descriptor"},
        {{"--attach", "5", "a.xml"}, "with --attach the plug-in has the sound"},
        {{"--into", "77"}, "--into goes with --attach"},
        {{"--frobnicate"}, "--frobnicate"},
    };
    for (const auto& [arguments, text] : cases) {
        const CommandResult result = Vexa(arguments);
        EXPECT_EQ(result.exitCode, 2) << text;
        EXPECT_THAT(result.text, HasSubstr(text));
    }
    EXPECT_THAT(Vexa({"--help"}).text, HasSubstr("--no-window"));
    EXPECT_EQ(Vexa({"--version"}).exitCode, 0);
}

TEST(VexaProgram, WithoutADisplayItNamesTheWaysToPlay) {
    const CommandResult result = Vexa({});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.text, HasSubstr("there is no display"));
    EXPECT_THAT(result.text, HasSubstr("--no-window"));
    EXPECT_THAT(result.text, HasSubstr("vexa-render"));
}

TEST(VexaProgram, ASoundAndATuningThatWereAskedForMustBeThere) {
    const CommandResult result =
        Vexa({"--no-window", "--audio", "none", "--sound", "/none/sound.xml"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.text, HasSubstr("/none/sound.xml"));
    const test::TemporaryFolder folder;
    const std::string bad = folder.Write("bad.xml", "<vexasound><vexafunction><expression>2x"
                                                    "</expression></vexafunction></vexasound>");
    const CommandResult function = Vexa({"--no-window", "--audio", "none", "--sound", bad});
    EXPECT_EQ(function.exitCode, 1);
    EXPECT_THAT(function.text, HasSubstr("vexa: " + bad + ": <expression>: character 1: \"2x\""));
    EXPECT_THAT(function.text, Not(HasSubstr("gcc")));
    EXPECT_THAT(function.text, Not(HasSubstr("disconnect"))) << "nothing was connected";
    const CommandResult tuning =
        Vexa({"--no-window", "--audio", "none", "--tuning", "/none/scale.scl"});
    EXPECT_EQ(tuning.exitCode, 1);
    EXPECT_THAT(tuning.text, HasSubstr("vexa: could not read /none/scale.scl"));
}

TEST(VexaProgram, WithoutAnyDeviceOrCompilerItLivesAndEndsByItsSignal) {
    ::setenv("JACK_DEFAULT_SERVER", "vexa-test-none", 1);
    const test::EnvironmentVariable path("PATH", "/none");
    const CommandResult result =
        test::RunCommand({VEXA_PROGRAM_FOLDER "/vexa", "--no-window", "--audio", "none"},
                         test::TerminateWhenHandled);
    EXPECT_EQ(result.exitCode, 0) << result.text;
    EXPECT_THAT(result.text, Not(HasSubstr("gcc")));
    EXPECT_THAT(result.text, HasSubstr("unable to get the system mixer"));
    EXPECT_THAT(result.text, HasSubstr("there is no sound: no audio system was asked for"));
    EXPECT_THAT(result.text, HasSubstr("s without sound, 0 MIDI events lost"));
    // What was never connected is not told to be hard to disconnect.
    EXPECT_THAT(result.text, Not(HasSubstr("disconnect")));
}

TEST(VexaProgram, PlaysWithAWarningWhereTheUsersFoldersCannotBeMade) {
    const test::TemporaryFolder folder;
    const test::EnvironmentVariable data("XDG_DATA_HOME", folder.Write("taken", "").c_str());
    const CommandResult result = test::RunCommand(
        {VEXA_PROGRAM_FOLDER "/vexa", "--no-window", "--audio", "none", "--user-folder"},
        test::TerminateWhenHandled);
    EXPECT_EQ(result.exitCode, 0) << result.text;
    EXPECT_THAT(result.text, HasSubstr("vexa: warning: could not create the folder " +
                                       (folder.Path() / "taken/vexa/functions").string()));
    EXPECT_THAT(result.text, HasSubstr("nothing can be saved"));
}

TEST(VexaProgram, ASignalAtTheStartLeavesNoPartOfARecordingBehind) {
    const test::TemporaryFolder folder;
    const auto path = folder.Path() / "heard.wav";
    const auto terminateWhenBegun = [&](pid_t child) {
        while (folder.Count() == 0 && !test::EndsWithin(child, std::chrono::milliseconds(0))) {
        }
        ::kill(child, SIGTERM);
    };
    const CommandResult result = test::RunCommand(
        {VEXA_PROGRAM_FOLDER "/vexa", "--no-window", "--audio", "none", "--record", path.string()},
        terminateWhenBegun);
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.text, HasSubstr("--record: "));
    EXPECT_EQ(folder.Count(), 0U);
}

} // namespace
