// SPDX-License-Identifier: GPL-3.0-or-later
// The command line of vexa.
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
#include <vector>

namespace vexa {

/// What a command line asks for.
struct AppOptions {
    enum class Action { Play, List, Help, Version };
    Action action = Action::Play;

    bool noWindow = false;
    /// The window is the logo bar and the main view alone, in their first colours.
    bool classic = false;
    /// A sound, a function, a sample or a picture to start with.
    std::optional<std::filesystem::path> file;
    /// A file's path or a sound's name. Without a value: the sound "default".
    std::optional<std::filesystem::path> sound;
    /// What a person makes is kept in the user's folder, wherever the program lies.
    bool userFolder = false;
    /// Most voices at once. Without a value: the sound's polyphony, else 20 without a window, and
    /// with one what its menu says.
    std::optional<int> voices;
    /// The MIDI channel to listen to, 0..15, or -1 for all. Without a value: all.
    std::optional<int> channel;
    /// The frequencies of the keys.
    TuningChoice tuning;
    /// VexaMidiConsumer::ExpectMpe.
    bool mpe = false;
    /// Program changes choose sounds.
    bool programs = false;
    /// Stand before what any sound says of how it is played.
    PlayingTexts playing;
    /// Without a value: the first system that has a device.
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

/// What goes to standard error after a wrong command line's fault.
constexpr const char* kAppUsageHint =
    "Usage: vexa [options] [FILE]; vexa --help names the options.";
/// Exit code after a wrong command line.
constexpr int kAppUsageExitCode = 2;

/// Reads the arguments after the program's name. The error names the option and what it allows. Not
/// to be called by two threads at once.
kits::Result<AppOptions> ParseAppOptions(std::span<const std::string> arguments);

/// The table of options, of which the help is made, and the pages in packaging/pages.
std::vector<kits::OptionText> AppOptionTexts();

/// What --help and --version print, with a newline at the end.
std::string AppHelpText();
std::string AppVersionText();

} // namespace vexa
