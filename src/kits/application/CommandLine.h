// SPDX-License-Identifier: GPL-3.0-or-later
// Options of a command line, driven by a table from which the help text is made as well.
#pragma once

#include "kits/support/Result.h"

#include <charconv>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kits {

/// The description of an option, without its effect.
struct OptionText {
    const char* name;
    /// The word that stands for the value in the help; null for an option without a value.
    const char* value;
    /// The allowed values, in the words of the help and of the message about any other value. If it
    /// is null, any text that is not empty is allowed.
    const char* allowed;
    const char* help;
};

/// A row of the table of options.
template<class Options>
struct OptionRow : OptionText {
    /// Sets the value in the options; returns false if it is not allowed.
    bool (*set)(Options& options, std::string_view text);
};

/// Reads the whole of `text` as a number within the limits (never a NaN), independently of the
/// locale. Returns false for any other text.
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

/// Sets `target` to the text; returns false if that is empty.
template<class Target>
bool SetText(Target& target, std::string_view text) {
    target = text;
    return !text.empty();
}

/// Reads a MIDI channel: "1" to "16" give 0 to 15, and "all" gives -1. Returns false for any other
/// text.
bool SetChannel(int& channel, std::string_view text);

/// Calls `set` for each option in `arguments`, which exclude the program's name, with the row's
/// index and the value, and returns the operands. The error names the option and its allowed
/// values. Two threads must not call it at once.
Result<std::vector<std::string>>
ParseCommandLine(std::span<const OptionText> rows, std::span<const std::string> arguments,
                 const std::function<bool(std::size_t row, std::string_view value)>& set);

/// Returns the rows as lines of a help text.
std::string OptionHelp(std::span<const OptionText> rows);

/// Reads options and values by rows that can set them.
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
