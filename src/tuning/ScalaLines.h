// SPDX-License-Identifier: GPL-3.0-or-later
// The lines of a Scala file. Scala's formats are the common ones for the exchange of tunings.
#pragma once

#include "kits/support/Result.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace vexa {

/// Iterates over a file's lines, which end with a newline, a carriage return or both; lines that
/// begin with "!" are comments and are skipped. It starts before the first line.
class ScalaLines {
  public:
    /// `name` is the file's name for messages; the bytes must outlive this object.
    ScalaLines(std::string_view bytes, std::string name);

    /// Steps to the next line, or to the next that is not blank; false at the end, where the text
    /// is empty.
    bool Next();
    bool NextFilled();

    /// Returns the line without its line end.
    std::string_view Text() const { return text; }
    /// Returns the line's number, from 1; at the end that of the last line, 1 if there is none.
    int Number() const { return std::max(number, 1); }

    /// "NAME:LINE: expected WHAT, not "TEXT"" or, at the end, that the file ends there.
    kits::Error Expected(const std::string& what) const;
    /// Makes the error "NAME:LINE: REASON" for the line of that number.
    kits::Error Fault(int line, const std::string& reason) const;

  private:
    std::string_view rest;
    std::string_view text;
    std::string name;
    int number = 0;
    bool ended = false;
};

/// Returns the line's first word, which ends at a space or a tab.
std::string_view FirstWord(std::string_view line);

/// Returns the first word of a line as a number; nothing if the whole word is not a number within
/// the limits. NaN is outside any limits.
template<class Number>
std::optional<Number> NumberIn(std::string_view line, Number minimum, Number maximum) {
    const std::string_view word = FirstWord(line);
    Number number{};
    const auto [stop, fault] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (fault != std::errc() || stop != word.data() + word.size() ||
        !(number >= minimum && number <= maximum))
        return std::nullopt;
    return number;
}

} // namespace vexa
