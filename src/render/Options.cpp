// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Options.h"

#include "instrument/PlayingOptions.h"
#include "kits/media/SoundFileWriter.h"

#include <algorithm>

namespace vexa {

namespace {

using kits::SetNumber;
using kits::SetText;

/// "a=0.3"
bool SetMacro(Options& options, std::string_view text) {
    if (text.size() < 2 || text[0] < 'a' || text[0] > 'd' || text[1] != '=')
        return false;
    return SetNumber(options.macros[static_cast<std::size_t>(text[0] - 'a')].emplace(),
                     text.substr(2), 0.0, 1.0);
}

/// "2=bell"
bool SetChannelSound(Options& options, std::string_view text) {
    const std::size_t end = text.find('=');
    int channel = 0;
    return end != text.npos && SetNumber(channel, text.substr(0, end), 1, 16) &&
           SetText(options.channelSounds[static_cast<std::size_t>(channel - 1)].emplace(),
                   text.substr(end + 1));
}

// The columns are easier to compare than to wrap.
// clang-format off
constexpr kits::OptionRow<Options> kRows[] = {
    {{"sound", "SOUND", nullptr, "play a file, or the sound of that name (default)"},
     [](Options& o, std::string_view text) { return SetText(o.sound.emplace(), text); }},
    {{"channel-sound", "N=SOUND", "1 to 16, \"=\" and a sound",
      "play a channel with a sound of its own"}, SetChannelSound},
    {{"function", "EXPR", nullptr, "play this function of x and y instead of the sound's"},
     [](Options& o, std::string_view text) { return SetText(o.function.emplace(), text); }},
    {{"macro", "M=V", "a, b, c or d, \"=\" and a number from 0 to 1", "set a macro"},
     SetMacro},
    {{"compile", nullptr, nullptr, "let gcc compile a function of x and y alone, for long pieces"},
     [](Options& o, std::string_view) { return o.compile = true; }},
    {{"sample", "FILE", nullptr, "play this sample instead of the sound's function"},
     [](Options& o, std::string_view text) { return SetText(o.sample.emplace(), text); }},
    {{"sample-frequency", "HZ", "a number from 0.001 to 1000000", "the pitch of the sample"},
     [](Options& o, std::string_view text) { return SetNumber(o.sampleFrequency.emplace(), text, 1e-3, 1e6); }},
    {{"picture", "FILE", nullptr, "play the brightness of this PNG or JPEG instead"},
     [](Options& o, std::string_view text) { return SetText(o.picture.emplace(), text); }},
    {{"voices", "N", "a whole number from 1 to 20", "most voices at once (the sound's, or 20)"},
     [](Options& o, std::string_view text) { return SetNumber(o.voices.emplace(), text, 1, 20); }},
    {{"channel", "N", "a whole number from 1 to 16 or \"all\"", "the MIDI channel to play (all)"},
     [](Options& o, std::string_view text) { return kits::SetChannel(o.channel, text); }},
    {{"rate", "HZ", "a whole number from 8000 to 768000", "frames per second (44100)"},
     [](Options& o, std::string_view text) { return SetNumber(o.rate, text, 8000, 768000); }},
    {{"gain", "G", "a number from 0 to 1", "the volume (0.25)"},
     [](Options& o, std::string_view text) { return SetNumber(o.gain, text, 0.0, 1.0); }},
    {{"tail", "SECONDS", "a number from 0 to 3600", "go on after the last event (3)"},
     [](Options& o, std::string_view text) { return SetNumber(o.tail, text, 0.0, 3600.0); }},
    {{"block", "FRAMES", "a whole number from 1 to 65536", "render so many frames at a time (4096)"},
     [](Options& o, std::string_view text) { return SetNumber(o.block, text, 1, 65536); }},
    {{"normalize", nullptr, nullptr, "scale the whole to full volume"},
     [](Options& o, std::string_view) { return o.normalize = true; }},
    {{"mpe", nullptr, nullptr, "take channels for notes' own (MPE) from the start"},
     [](Options& o, std::string_view) { return o.mpe = true; }},
    {{"programs", nullptr, nullptr, "let the file's program changes choose sounds, by number"},
     [](Options& o, std::string_view) { return o.programs = true; }},
    {{"tuning", "FILE", nullptr, "tune the keys to this scale, a Scala file (.scl)"},
     [](Options& o, std::string_view text) { return SetText(o.tuning.scale.emplace(), text); }},
    {{"keymap", "FILE", nullptr, "play the scale by this keyboard map, a Scala file (.kbm)"},
     [](Options& o, std::string_view text) { return SetText(o.tuning.keymap.emplace(), text); }},
    {{"a4", "HZ", "a number from 1 to 20000", "tune key 69 to it (440)"},
     [](Options& o, std::string_view text) { return SetNumber(o.tuning.a4.emplace(), text, kLeastA4, kMostA4); }},
    {{"user-folder", nullptr, nullptr, "find what you made in $XDG_DATA_HOME/vexa, not beside the program"},
     [](Options& o, std::string_view) { return o.userFolder = true; }},
    {{"quiet", nullptr, nullptr, "show no progress"},
     [](Options& o, std::string_view) { return o.quiet = true; }},
    {{"help", nullptr, nullptr, "show this"},
     [](Options& o, std::string_view) { o.action = Options::Action::Help; return true; }},
    {{"version", nullptr, nullptr, "show the version"},
     [](Options& o, std::string_view) { o.action = Options::Action::Version; return true; }},
};
// clang-format on

const std::vector<kits::OptionRow<Options>>& Rows() {
    static const auto rows = WithPlayingOptions<Options>(kRows, "channel");
    return rows;
}

kits::Result<Options> Checked(Options options, std::span<const std::string> operands) {
    if (options.action != Options::Action::Render)
        return options;
    if (operands.size() < 2)
        return kits::Error{operands.empty() ? "no MIDI file is named" : "no output is named"};
    if (operands.size() > 2)
        return kits::Error{'"' + operands[2] + "\" is one file too many"};
    if (!SetText(options.midi, operands[0]) || !SetText(options.output, operands[1]))
        return kits::Error{"a file name is empty"};
    if (const auto format = kits::SoundFileFormatOf(options.output); !format)
        return format.Fault();
    const struct {
        const char* first;
        const char* second;
        bool both;
    } pairs[] = {
        {"--function", "--sample", options.function && options.sample},
        {"--function", "--sample-frequency", options.function && options.sampleFrequency},
        {"--function", "--picture", options.function && options.picture},
        {"--sample", "--picture", options.sample && options.picture},
        {"--picture", "--sample-frequency", options.picture && options.sampleFrequency},
    };
    for (const auto& [first, second, both] : pairs) {
        if (both)
            return kits::Error{std::string(first) + " and " + second + " exclude each other"};
    }
    if (options.mpe && HasChannelSounds(options))
        return kits::Error{"--mpe and --channel-sound exclude each other: the first gives channels "
                           "to notes, the second to sounds"};
    return options;
}

} // namespace

bool HasChannelSounds(const Options& options) {
    return std::ranges::any_of(options.channelSounds, [](const auto& s) { return bool(s); });
}

kits::Result<Options> ParseOptions(std::span<const std::string> arguments) {
    Options options;
    const auto operands = kits::ParseCommandLine<Options>(Rows(), arguments, options);
    if (!operands)
        return operands.Fault();
    return Checked(std::move(options), *operands);
}

std::vector<kits::OptionText> OptionTexts() {
    return {Rows().begin(), Rows().end()};
}

std::string HelpText() {
    return "Usage: vexa-render MIDI OUTPUT [options]\n\n"
           "Renders a Standard MIDI File through a sound to a sound file; the ending of\n"
           "OUTPUT chooses its format.\n\n" +
           kits::OptionHelp<Options>(Rows());
}

std::string VersionText() {
    return "vexa-render " VEXA_VERSION "\n";
}

} // namespace vexa
