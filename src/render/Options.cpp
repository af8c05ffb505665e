#include "render/Options.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>
#include <string_view>
#include <system_error>
#include <vector>

#include <getopt.h>

namespace vexa {

namespace {

/// Takes an option's value over into the options; false if the value is not allowed.
using Setter = bool (*)(Options& options, std::string_view text);

/// One row per option: all that the parser and the help know about it.
struct OptionRow {
    const char* name;
    /// What stands for the value in the help; an option without a value has none.
    const char* value;
    /// What the value may be, for the help and the message when it is something else; any text that
    /// is not empty if this is missing.
    const char* allowed;
    const char* help;
    Setter set;
};

/// The whole of `text` as a number within the limits, which no NaN is.
template<class Number>
bool SetNumber(Number& target, std::string_view text, Number minimum, Number maximum) {
    Number number{};
    const char* end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, number);
    if (fault != std::errc() || stop != end || !(number >= minimum && number <= maximum))
        return false;
    target = number;
    return true;
}

template<class Target>
bool SetText(Target& target, std::string_view text) {
    target = text;
    return !text.empty();
}

bool SetChannel(Options& options, std::string_view text) {
    int number = 0; // channel 1 is 0, all channels are -1
    if (text != "all" && !SetNumber(number, text, 1, 16))
        return false;
    options.channel = number - 1;
    return true;
}

bool SetOversample(Options& options, std::string_view text) {
    const auto factors = {1, 2, 4, 8, 16};
    int number = 0;
    if (!SetNumber(number, text, 1, 16) ||
        std::find(factors.begin(), factors.end(), number) == factors.end())
        return false;
    options.oversample = number;
    return true;
}

// The columns are easier to compare than to wrap.
// clang-format off
constexpr OptionRow kRows[] = {
    {"sound", "FILE", nullptr, "the sound document (sounds/default.xml)",
     [](Options& o, std::string_view text) { return SetText(o.sound.emplace(), text); }},
    {"function", "EXPR", nullptr, "play this function of x and y instead of the sound's",
     [](Options& o, std::string_view text) { return SetText(o.function.emplace(), text); }},
    {"sample", "FILE", nullptr, "play this sample instead of the sound's function",
     [](Options& o, std::string_view text) { return SetText(o.sample.emplace(), text); }},
    {"sample-frequency", "HZ", "a number from 0.001 to 1000000", "the pitch of the sample",
     [](Options& o, std::string_view text) { return SetNumber(o.sampleFrequency.emplace(), text, 1e-3, 1e6); }},
    {"voices", "N", "a whole number from 1 to 20", "most voices at once (20)",
     [](Options& o, std::string_view text) { return SetNumber(o.voices, text, 1, 20); }},
    {"channel", "N", "a whole number from 1 to 16 or \"all\"", "the MIDI channel to play (all)",
     SetChannel},
    {"rate", "HZ", "a whole number from 8000 to 768000", "frames per second (44100)",
     [](Options& o, std::string_view text) { return SetNumber(o.rate, text, 8000, 768000); }},
    {"oversample", "N", "1, 2, 4, 8 or 16", "compute at this multiple of the rate (1)",
     SetOversample},
    {"gain", "G", "a number from 0 to 1", "the volume (0.25)",
     [](Options& o, std::string_view text) { return SetNumber(o.gain, text, 0.0, 1.0); }},
    {"tail", "SECONDS", "a number from 0 to 3600", "go on after the last event (3)",
     [](Options& o, std::string_view text) { return SetNumber(o.tail, text, 0.0, 3600.0); }},
    {"block", "FRAMES", "a whole number from 1 to 65536", "render so many frames at a time (512)",
     [](Options& o, std::string_view text) { return SetNumber(o.block, text, 1, 65536); }},
    {"normalize", nullptr, nullptr, "scale the whole to full volume",
     [](Options& o, std::string_view) { return o.normalize = true; }},
    {"quiet", nullptr, nullptr, "show no progress",
     [](Options& o, std::string_view) { return o.quiet = true; }},
    {"help", nullptr, nullptr, "show this",
     [](Options& o, std::string_view) { o.action = Options::Action::Help; return true; }},
    {"version", nullptr, nullptr, "show the version",
     [](Options& o, std::string_view) { o.action = Options::Action::Version; return true; }},
};
// clang-format on

/// "--name VALUE" as the help shows it.
std::string Synopsis(const OptionRow& row) {
    std::string text = std::string("--") + row.name;
    return row.value ? text + ' ' + row.value : text;
}

// getopt_long answers with the row's index, told apart from characters by its size.
static_assert(std::size(kRows) < ' ');

/// The rows as getopt_long takes them, each with its index as the value.
std::vector<option> GetoptTable() {
    std::vector<option> table;
    for (const OptionRow& row : kRows) {
        const int index = static_cast<int>(table.size());
        table.push_back({row.name, row.value ? required_argument : no_argument, nullptr, index});
    }
    table.push_back({});
    return table;
}

/// What getopt_long's answer `found` (':' or '?') means for the argument that it stopped at.
kits::Error Misuse(int found, const char* argument) {
    if (found == ':')
        return {std::string(argument) + " needs a value"};
    if (::optopt >= ' ')
        return {std::string("unknown option -") + static_cast<char>(::optopt)};
    if (::optopt > 0)
        return {std::string("--") + kRows[::optopt].name + " takes no value"};
    return {std::string("unknown or ambiguous option ") + argument};
}

kits::Result<Options> Checked(Options options, std::span<char* const> operands) {
    if (options.action != Options::Action::Render)
        return options;
    if (operands.size() < 2)
        return kits::Error{operands.empty() ? "no MIDI file is named" : "no output is named"};
    if (operands.size() > 2)
        return kits::Error{std::string("\"") + operands[2] + "\" is one file too many"};
    if (!SetText(options.midi, operands[0]) || !SetText(options.output, operands[1]))
        return kits::Error{"a file name is empty"};
    if (options.function && options.sample)
        return kits::Error{"--function and --sample exclude each other"};
    if (options.function && options.sampleFrequency)
        return kits::Error{"--function and --sample-frequency exclude each other"};
    return options;
}

} // namespace

kits::Result<Options> ParseOptions(std::span<const std::string> arguments) {
    const std::vector<option> table = GetoptTable();
    // getopt_long puts the operands behind the options: it moves these pointers.
    std::string program = "vexa-render";
    std::vector<std::string> texts(arguments.begin(), arguments.end());
    std::vector<char*> argv{program.data()};
    for (std::string& text : texts)
        argv.push_back(text.data());
    const int count = static_cast<int>(argv.size());
    argv.push_back(nullptr);

    Options options;
    ::optind = 0; // start anew, not where the last command line ended
    ::opterr = 0; // the messages are ours
    for (;;) {
        // The colon asks for ':' where a value is missing.
        const int found = ::getopt_long(count, argv.data(), ":", table.data(), nullptr);
        if (found == ':' || found == '?')
            return Misuse(found, argv[::optind - 1]);
        if (found < 0)
            break;
        const OptionRow& row = kRows[found];
        if (!row.set(options, ::optarg ? ::optarg : ""))
            return kits::Error{row.allowed ? std::string("--") + row.name + " takes " +
                                                 row.allowed + ", not \"" + ::optarg + '"'
                                           : std::string("--") + row.name + " needs a value"};
    }
    return Checked(options, std::span(argv).subspan(::optind, count - ::optind));
}

std::string HelpText() {
    std::string text =
        "Usage: vexa-render MIDI OUTPUT [options]\n\n"
        "Renders a Standard MIDI File through a sound to a sound file; the ending of\n"
        "OUTPUT chooses its format.\n\n";
    std::size_t width = 0;
    for (const OptionRow& row : kRows)
        width = std::max(width, Synopsis(row).size());
    for (const OptionRow& row : kRows) {
        const std::string synopsis = Synopsis(row);
        text += "  " + synopsis + std::string(width + 2 - synopsis.size(), ' ') + row.help;
        if (row.allowed)
            text += std::string("; ") + row.allowed;
        text += '\n';
    }
    return text;
}

std::string VersionText() {
    return "vexa-render " VEXA_VERSION "\n";
}

} // namespace vexa
