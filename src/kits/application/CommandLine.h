// SPDX-License-Identifier: GPL-3.0-or-later
// Options of a command line, driven by a table from which the help is made too.
#pragma once

#include "kits/support/Result.h"

#include <charconv>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kits {

/// What is known of an option besides what it does.
struct OptionText {
    const char* name;
    /// The word that stands for the value in the help; null for an option without a value.
    const char* value;
    /// What the value may be, in the words of the help and of the message when it is something
    /// else. Where it is null, any text that is not empty will do.
    const char* allowed;
    const char* help;
};

/// A row of the table of options.
template<class Options>
struct OptionRow : OptionText {
    /// Takes the value over into the options; false if it is not allowed.
    bool (*set)(Options& options, std::string_view text);
};

/// The whole of `text` as a number within the limits, which no NaN is; in every locale the same.
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

/// Takes any text over but an empty one.
template<class Target>
bool SetText(Target& target, std::string_view text) {
    target = text;
    return !text.empty();
}

/// Reads a MIDI channel: "1" to "16" give 0 to 15, and "all" gives -1. False for any other text.
bool SetChannel(int& channel, std::string_view text);

/// Calls `set` for each option in `arguments` (the program's name is not among them) with the row's
/// index and the value, and returns the operands. The error names the option and what it allows.
/// Not to be called by two threads at once.
Result<std::vector<std::string>>
ParseCommandLine(std::span<const OptionText> rows, std::span<const std::string> arguments,
                 const std::function<bool(std::size_t row, std::string_view value)>& set);

/// Returns the rows as lines of a help text.
std::string OptionHelp(std::span<const OptionText> rows);

/// Reads options and values by rows that know how to set them.
template<class Options>
Result<std::vector<std::string>> ParseCommandLine(std::span<const OptionRow<Options>> rows,
                                                  std::span<const std::string> arguments,
                                                  Options& options) {
    const std::vector<OptionText> texts(rows.begin(), rows.end());
    return ParseCommandLine(texts, arguments, [&](std::size_t row, std::string_view value) {
        return rows[row].set(options, value);
    });
}
template<class Options>
std::string OptionHelp(std::span<const OptionRow<Options>> rows) {
    return OptionHelp(std::vector<OptionText>(rows.begin(), rows.end()));
}

} // namespace kits
