// SPDX-License-Identifier: GPL-3.0-or-later
// The options of vexa-render.
#pragma once

#include "documents/Sound.h"
#include "kits/application/CommandLine.h"
#include "kits/support/Result.h"
#include "synth/Macros.h"
#include "synth/VoiceRenderer.h"
#include "tuning/TuningChoice.h"

#include <array>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vexa {

/// The options of a command line. Texts are never empty; numbers are within the ranges that the
/// help gives.
struct Options {
    enum class Action { Render, Help, Version };
    Action action = Action::Render;

    std::filesystem::path midi;
    std::filesystem::path output;

    /// The path of a file or the name of a sound. Without a value the sound "default" plays.
    std::optional<std::filesystem::path> sound;
    /// The sounds of single MIDI channels. Each of these channels has an instrument of its own.
    std::array<std::optional<std::filesystem::path>, 16> channelSounds;
    /// Replace the sound's function; at most one of the first three has a value. A frequency (Hz)
    /// without a sample applies to the sample of the sound, if it has one.
    std::optional<std::string> function;
    std::optional<std::filesystem::path> sample;
    std::optional<std::filesystem::path> picture;
    std::optional<double> sampleFrequency;

    /// The values, 0..1, of the macros a to d; they replace those of `sound`.
    std::array<std::optional<double>, kMacros> macros;
    /// The tuning of the keys.
    TuningChoice tuning;
    /// True if VexaMidiConsumer::ExpectMpe is called.
    bool mpe = false;
    /// True if program changes choose sounds.
    bool programs = false;
    /// Override the sound's own settings of how it is played.
    PlayingTexts playing;
    /// True if the sound's function is compiled by gcc.
    bool compile = false;
    /// The maximum number of voices. Without a value it is the sound's polyphony, or 20.
    std::optional<int> voices;
    /// The MIDI channel to play, 0..15, or -1 for all.
    int channel = -1;
    /// The sample rate of the output file, Hz.
    int rate = 44100;
    double gain = VoiceRenderer::kUsualGain;
    /// The seconds to render after the last event.
    double tail = 3;
    /// The frames rendered at a time; the output does not depend on it.
    int block = 4096;
    /// True if the output is scaled to a peak of 1.
    bool normalize = false;
    /// True if the user's own content is looked up in the user's folder, wherever the program is
    /// installed.
    bool userFolder = false;
    bool quiet = false;
};

/// Returns true if any channel has a sound of its own.
bool HasChannelSounds(const Options& options);

/// The hint that is printed to standard error after the fault of a wrong command line.
constexpr const char* kUsageHint =
    "Usage: vexa-render MIDI OUTPUT [options]; vexa-render --help names the options.";

/// The exit code after a wrong command line.
constexpr int kUsageExitCode = 2;

/// Reads the arguments after the program's name; numbers are read independently of the locale. The
/// error names the option and its allowed values. At most one thread may call it at a time.
kits::Result<Options> ParseOptions(std::span<const std::string> arguments);

/// Returns the table of options, from which the help and the pages in packaging/pages are made.
std::vector<kits::OptionText> OptionTexts();

/// Return the output of --help and --version, with a newline at the end.
std::string HelpText();
std::string VersionText();

} // namespace vexa
