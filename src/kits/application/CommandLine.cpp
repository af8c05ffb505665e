// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/application/CommandLine.h"

#include <algorithm>

#include <getopt.h>

namespace kits {

namespace {

/// Returns "--name VALUE" as the help shows it.
std::string Synopsis(const OptionText& row) {
    std::string text = std::string("--") + row.name;
    return row.value ? text + ' ' + row.value : text;
}

/// The rows as getopt_long takes them; each returns its index plus kFirstRow, which is beyond all
/// characters.
constexpr int kFirstRow = 256;

std::vector<option> GetoptTable(std::span<const OptionText> rows) {
    std::vector<option> table;
    for (const OptionText& row : rows) {
        const int value = kFirstRow + static_cast<int>(table.size());
        table.push_back({row.name, row.value ? required_argument : no_argument, nullptr, value});
    }
    table.push_back({});
    return table;
}

/// Returns the error for getopt_long's result `found` (':' or '?') and the argument at which it
/// stopped.
Error Misuse(std::span<const OptionText> rows, int found, const char* argument) {
    if (found == ':')
        return {std::string(argument) + " needs a value"};
    if (::optopt >= kFirstRow)
        return {std::string("--") + rows[static_cast<std::size_t>(::optopt - kFirstRow)].name +
                " takes no value"};
    if (::optopt > 0)
        return {"unknown option -" + std::string(1, static_cast<char>(::optopt)) +
                "; put -- before a file whose name begins with -"};
    return {std::string("unknown or ambiguous option ") + argument};
}

} // namespace

bool SetChannel(int& channel, std::string_view text) {
    int number = 0;
    if (text != "all" && !SetNumber(number, text, 1, 16))
        return false;
    channel = number - 1;
    return true;
}

Result<std::vector<std::string>>
ParseCommandLine(std::span<const OptionText> rows, std::span<const std::string> arguments,
                 const std::function<bool(std::size_t row, std::string_view value)>& set) {
    const std::vector<option> table = GetoptTable(rows);
    // getopt_long moves these pointers, so that the operands follow the options.
    std::string program;
    std::vector<std::string> texts(arguments.begin(), arguments.end());
    std::vector<char*> argv{program.data()};
    for (std::string& text : texts)
        argv.push_back(text.data());
    const int count = static_cast<int>(argv.size());
    argv.push_back(nullptr);

    ::optind = 0; // start anew, not where the last command line ended
    ::opterr = 0; // the messages are ours
    for (;;) {
        // The colon makes it return ':' for a missing value.
        const int found = ::getopt_long(count, argv.data(), ":", table.data(), nullptr);
        if (found == ':' || found == '?')
            return Misuse(rows, found, argv[::optind - 1]);
        if (found < 0)
            break;
        const auto index = static_cast<std::size_t>(found - kFirstRow);
        const OptionText& row = rows[index];
        if (!set(index, ::optarg ? ::optarg : ""))
            return Error{row.allowed ? std::string("--") + row.name + " takes " + row.allowed +
                                           ", not \"" + ::optarg + '"'
                                     : std::string("--") + row.name + " needs a value"};
    }
    return std::vector<std::string>(argv.begin() + ::optind, argv.begin() + count);
}

std::string OptionHelp(std::span<const OptionText> rows) {
    std::size_t width = 0;
    for (const OptionText& row : rows)
        width = std::max(width, Synopsis(row).size());
    std::string text;
    for (const OptionText& row : rows) {
        const std::string synopsis = Synopsis(row);
        text += "  " + synopsis + std::string(width + 2 - synopsis.size(), ' ') + row.help;
        if (row.allowed)
            text += std::string("; ") + row.allowed;
        text += '\n';
    }
    return text;
}

} // namespace kits
