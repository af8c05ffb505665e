// SPDX-License-Identifier: GPL-3.0-or-later
// The command-line options of vexa.
#pragma once

#include "documents/Sound.h"
#include "kits/application/CommandLine.h"
#include "kits/media/AudioSystem.h"
#include "kits/support/Result.h"
#include "tuning/TuningChoice.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// The values that a command line gives to the options.
struct AppOptions {
    enum class Action { Play, List, Help, Version };
    Action action = Action::Play;

    bool noWindow = false;
    /// True if the window shows only the logo bar and the main view, in their original colours.
    bool classic = false;
    /// The sound, function, sample or picture to start with.
    std::optional<std::filesystem::path> file;
    /// The path of a sound's file or the name of a sound. Without a value it is the sound
    /// "default".
    std::optional<std::filesystem::path> sound;
    /// True if the user's files are kept in the user's data folder, wherever the program lies.
    bool userFolder = false;
    /// The maximum number of simultaneous voices. Without a value the sound's polyphony applies. If
    /// the sound has none, the maximum is 20 without a window, and otherwise the choice in the
    /// window's menu.
    std::optional<int> voices;
    /// The MIDI channel to listen to, 0..15, or -1 for all channels. Without a value it is all.
    std::optional<int> channel;
    /// The frequencies of the keys.
    TuningChoice tuning;
    /// True if VexaMidiConsumer::ExpectMpe is to be called.
    bool mpe = false;
    /// True if program changes choose sounds.
    bool programs = false;
    /// How sounds are played; a text that is given here overrides that of any sound.
    PlayingTexts playing;
    /// The audio system to use. Without a value it is the first one that has a device.
    std::optional<kits::AudioSystem> audio;
    /// The sound file into which the output is recorded.
    std::optional<std::filesystem::path> record;
    /// The file descriptor of a socket from a plug-in, whose sound the window shows.
    std::optional<int> attach;
    /// The X window that the program's window fills.
    std::optional<uint32> into;
    /// The MIDI source to connect, by its name in --list; empty for none.
    std::optional<std::string> midi;
};

/// The hint that follows the error message of an invalid command line on standard error.
constexpr const char* kAppUsageHint =
    "Usage: vexa [options] [FILE]; vexa --help names the options.";
/// The exit code for an invalid command line.
constexpr int kAppUsageExitCode = 2;

/// Parses the arguments that follow the program's name. The error names the option and the values
/// that it allows. Two threads must not call it at the same time.
kits::Result<AppOptions> ParseAppOptions(std::span<const std::string> arguments);

/// Sets one option, as "--name=text" does; `text` is empty for an option without a value. Returns
/// false if there is no such option or the text is not allowed.
bool SetAppOption(AppOptions& options, std::string_view name, std::string_view text);

/// Returns the table of options, from which the help and the pages in packaging/pages are made.
std::vector<kits::OptionText> AppOptionTexts();

/// Return the output of --help and --version, with a newline at the end.
std::string AppHelpText();
std::string AppVersionText();

} // namespace vexa
