// SPDX-License-Identifier: GPL-3.0-or-later
// These are the options of vexa-render.
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

/// The options that a command line gives. Texts are never empty; numbers are in the ranges that the
/// help names.
struct Options {
    enum class Action { Render, Help, Version };
    Action action = Action::Render;

    std::filesystem::path midi;
    std::filesystem::path output;

    /// The path of a file or the name of a sound. Without a value it is the sound "default".
    std::optional<std::filesystem::path> sound;
    /// The sounds of single MIDI channels, each of which is then an instrument of its own.
    std::array<std::optional<std::filesystem::path>, 16> channelSounds;
    /// These replace the sound's function; at most one of the first three has a value. A frequency
    /// (Hz) without a sample is for the sample that the sound brings, if it does.
    std::optional<std::string> function;
    std::optional<std::filesystem::path> sample;
    std::optional<std::filesystem::path> picture;
    std::optional<double> sampleFrequency;

    /// Values, 0..1, of the macros a to d in place of those of `sound`.
    std::array<std::optional<double>, kMacros> macros;
    /// The frequencies of the keys.
    TuningChoice tuning;
    /// True where VexaMidiConsumer::ExpectMpe is to be called.
    bool mpe = false;
    /// True where program changes choose sounds.
    bool programs = false;
    /// Stand before what the sound says of how it is played.
    PlayingTexts playing;
    /// The sound's function is compiled by gcc.
    bool compile = false;
    /// The most voices at once. Without a value it is the sound's polyphony, or 20.
    std::optional<int> voices;
    /// The MIDI channel to play, 0..15, or -1 for all.
    int channel = -1;
    /// The frames per second of the file.
    int rate = 44100;
    double gain = VoiceRenderer::kUsualGain;
    /// The seconds that are rendered after the last event.
    double tail = 3;
    /// The frames rendered at a time; the result does not depend on it.
    int block = 4096;
    /// True where the whole is to be scaled to a peak of 1.
    bool normalize = false;
    /// True where what a person made is looked for in the user's folder, wherever the program lies.
    bool userFolder = false;
    bool quiet = false;
};

/// True where any channel has a sound of its own.
bool HasChannelSounds(const Options& options);

/// The hint that goes to standard error after a wrong command line's fault.
constexpr const char* kUsageHint =
    "Usage: vexa-render MIDI OUTPUT [options]; vexa-render --help names the options.";

/// The exit code after a wrong command line.
constexpr int kUsageExitCode = 2;

/// Reads the arguments after the program's name; the locale has no say in how numbers are read. The
/// error names the option and what it allows. Two threads must not call it at once.
kits::Result<Options> ParseOptions(std::span<const std::string> arguments);

/// The table of options, of which the help is made, and the pages in packaging/pages.
std::vector<kits::OptionText> OptionTexts();

/// Return what --help and --version print, with a newline at the end.
std::string HelpText();
std::string VersionText();

} // namespace vexa
