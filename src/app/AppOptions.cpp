// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AppOptions.h"

#include "instrument/PlayingOptions.h"
#include "kits/media/SoundFileWriter.h"

#include <algorithm>

namespace vexa {

namespace {

using kits::SetNumber;
using kits::SetText;

bool SetAudio(AppOptions& options, std::string_view text) {
    options.audio = kits::AudioSystemNamed(text);
    return options.audio.has_value();
}

bool SetRecord(AppOptions& options, std::string_view text) {
    return SetText(options.record.emplace(), text) && kits::SoundFileFormatOf(*options.record);
}

// The columns are easier to compare than to wrap.
// clang-format off
constexpr kits::OptionRow<AppOptions> kRows[] = {
    {{"no-window", nullptr, nullptr, "play until interrupted, without a window"},
     [](AppOptions& o, std::string_view) { return o.noWindow = true; }},
    {{"classic", nullptr, nullptr, "show the main view alone, in its first colours"},
     [](AppOptions& o, std::string_view) { return o.classic = true; }},
    {{"sound", "SOUND", nullptr, "start with a file, or with the sound of that name (default)"},
     [](AppOptions& o, std::string_view text) { return SetText(o.sound.emplace(), text); }},
    {{"voices", "N", "a whole number from 1 to 20", "most voices at once (the sound's, else 20, with a window 1)"},
     [](AppOptions& o, std::string_view text) { return SetNumber(o.voices.emplace(), text, 1, 20); }},
    {{"channel", "N", "a whole number from 1 to 16 or \"all\"", "the MIDI channel to listen to (all)"},
     [](AppOptions& o, std::string_view text) { return kits::SetChannel(o.channel.emplace(), text); }},
    {{"audio", "SYSTEM", "jack, pulse, alsa or none", "play through it (the first that is there)"},
     SetAudio},
    {{"midi", "PORT", nullptr, "connect this MIDI source, whenever it is there"},
     [](AppOptions& o, std::string_view text) { return SetText(o.midi.emplace(), text); }},
    {{"record", "FILE", "a name ending in .wav, .flac or .ogg", "record what is heard"},
     SetRecord},
    {{"mpe", nullptr, nullptr, "take channels for notes' own (MPE) from the start"},
     [](AppOptions& o, std::string_view) { return o.mpe = true; }},
    {{"programs", nullptr, nullptr, "let MIDI program changes choose sounds, by number"},
     [](AppOptions& o, std::string_view) { return o.programs = true; }},
    {{"tuning", "FILE", nullptr, "tune the keys to this scale, a Scala file (.scl)"},
     [](AppOptions& o, std::string_view text) { return SetText(o.tuning.scale.emplace(), text); }},
    {{"keymap", "FILE", nullptr, "play the scale by this keyboard map, a Scala file (.kbm)"},
     [](AppOptions& o, std::string_view text) { return SetText(o.tuning.keymap.emplace(), text); }},
    {{"a4", "HZ", "a number from 1 to 20000", "tune key 69 to it (440)"},
     [](AppOptions& o, std::string_view text) { return SetNumber(o.tuning.a4.emplace(), text, kLeastA4, kMostA4); }},
    {{"user-folder", nullptr, nullptr, "keep what you make in $XDG_DATA_HOME/vexa, not beside the program"},
     [](AppOptions& o, std::string_view) { return o.userFolder = true; }},
    {{"attach", "N", "the number of a descriptor, from 3 on", "show what plays in a plug-in; N is a socket from it"},
     [](AppOptions& o, std::string_view text) { return SetNumber(o.attach.emplace(), text, 3, 1 << 20); }},
    {{"into", "WINDOW", "the number of an X window", "with --attach: fill a window of the host's"},
     [](AppOptions& o, std::string_view text) { return SetNumber(o.into.emplace(), text, 1U, ~0U); }},
    {{"list", nullptr, nullptr, "list the audio devices and MIDI sources"},
     [](AppOptions& o, std::string_view) { o.action = AppOptions::Action::List; return true; }},
    {{"help", nullptr, nullptr, "show this"},
     [](AppOptions& o, std::string_view) { o.action = AppOptions::Action::Help; return true; }},
    {{"version", nullptr, nullptr, "show the version"},
     [](AppOptions& o, std::string_view) { o.action = AppOptions::Action::Version; return true; }},
};
// clang-format on

const std::vector<kits::OptionRow<AppOptions>>& Rows() {
    static const auto rows = WithPlayingOptions<AppOptions>(kRows, "channel");
    return rows;
}

} // namespace

kits::Result<AppOptions> ParseAppOptions(std::span<const std::string> arguments) {
    AppOptions options;
    const auto operands = kits::ParseCommandLine<AppOptions>(Rows(), arguments, options);
    if (!operands)
        return operands.Fault();
    if (operands->size() > 1)
        return kits::Error{"one file can be opened, not " + std::to_string(operands->size())};
    if (!operands->empty())
        options.file = operands->front();
    if (options.file && options.noWindow)
        return kits::Error{"without a window only a sound plays, given as --sound SOUND"};
    if (options.classic && options.noWindow)
        return kits::Error{"--classic is about the window, --no-window has none"};
    const bool isOwnInstrument = options.file || options.noWindow || options.sound ||
                                 options.voices || options.channel || options.audio ||
                                 options.midi || options.record || options.mpe ||
                                 options.programs || options.playing != PlayingTexts();
    if (options.attach && isOwnInstrument)
        return kits::Error{"with --attach the plug-in has the sound and its host all else; only "
                           "--into and --user-folder go with it"};
    if (options.into && !options.attach)
        return kits::Error{"--into goes with --attach"};
    return options;
}

bool SetAppOption(AppOptions& options, std::string_view name, std::string_view text) {
    const auto row = std::ranges::find_if(Rows(), [&](const auto& r) { return r.name == name; });
    return row != Rows().end() && (row->value || text.empty()) && row->set(options, text);
}

std::vector<kits::OptionText> AppOptionTexts() {
    return {Rows().begin(), Rows().end()};
}

std::string AppHelpText() {
    return "Usage: vexa [options] [FILE]\n\n"
           "Opens the synthesizer's window with a sound, a function, a sample or a picture, or "
           "plays without one. Set VEXA_TRACE=1 for trace lines "
           "on standard error.\n\n" +
           kits::OptionHelp<AppOptions>(Rows());
}

std::string AppVersionText() {
    return "vexa " VEXA_VERSION "\n";
}

} // namespace vexa
