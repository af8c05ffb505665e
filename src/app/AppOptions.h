// SPDX-License-Identifier: GPL-3.0-or-later
// These are the options of vexa.
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

/// The options that a command line gives.
struct AppOptions {
    enum class Action { Play, List, Help, Version };
    Action action = Action::Play;

    bool noWindow = false;
    /// The window is the logo bar and the main view alone, in their first colours.
    bool classic = false;
    /// A sound, a function, a sample or a picture to start with.
    std::optional<std::filesystem::path> file;
    /// The path of a file or the name of a sound. Without a value it is the sound "default".
    std::optional<std::filesystem::path> sound;
    /// True where what a person makes is kept in the user's folder, wherever the program lies.
    bool userFolder = false;
    /// The most voices at once. Without a value it is the sound's polyphony, else 20 without a
    /// window, and with one what its menu says.
    std::optional<int> voices;
    /// The MIDI channel to listen to, 0..15, or -1 for all. Without a value it is all.
    std::optional<int> channel;
    /// The frequencies of the keys.
    TuningChoice tuning;
    /// True where VexaMidiConsumer::ExpectMpe is to be called.
    bool mpe = false;
    /// True where program changes choose sounds.
    bool programs = false;
    /// Stand before what any sound says of how it is played.
    PlayingTexts playing;
    /// The audio system. Without a value it is the first that has a device.
    std::optional<kits::AudioSystem> audio;
    /// The sound file to be written of what is heard.
    std::optional<std::filesystem::path> record;
    /// The descriptor of a socket from a plug-in, whose sound the window shows.
    std::optional<int> attach;
    /// The X window that the window fills.
    std::optional<uint32> into;
    /// The MIDI source to connect, by its name in --list.
    std::optional<std::string> midi;
};

/// The hint that goes to standard error after a wrong command line's fault.
constexpr const char* kAppUsageHint =
    "Usage: vexa [options] [FILE]; vexa --help names the options.";
/// The exit code after a wrong command line.
constexpr int kAppUsageExitCode = 2;

/// Reads the arguments after the program's name. The error names the option and what it allows. Two
/// threads must not call it at once.
kits::Result<AppOptions> ParseAppOptions(std::span<const std::string> arguments);

/// Sets one option, as "--name=text"; an option without a value has an empty text. False where
/// there is no such option or the text is not allowed.
bool SetAppOption(AppOptions& options, std::string_view name, std::string_view text);

/// The table of options, of which the help is made, and the pages in packaging/pages.
std::vector<kits::OptionText> AppOptionTexts();

/// Return what --help and --version print, with a newline at the end.
std::string AppHelpText();
std::string AppVersionText();

} // namespace vexa
