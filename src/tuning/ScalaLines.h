// SPDX-License-Identifier: GPL-3.0-or-later
// The lines of a file of Scala, the program whose formats tunings are exchanged in.
#pragma once

#include "kits/support/Result.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace vexa {

/// Walks through a file's lines, which end with or without a carriage return; those that begin with
/// "!" are comments and are passed over. At first it stands before the first line.
class ScalaLines {
  public:
    /// `name` is the file's, for messages; the bytes must outlive the walk.
    ScalaLines(std::string_view bytes, std::string name);

    /// Steps to the next line, or to the next that is not blank; false at the end, where the text
    /// is empty.
    bool Next();
    bool NextFilled();

    /// The line without what ends it.
    std::string_view Text() const { return text; }
    /// The line's number, from 1; at the end that of the last one, 1 where there is none.
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

/// The line's first word, which ends at a space or a tab.
std::string_view FirstWord(std::string_view line);

/// The first word of a line where the whole of it is a number within the limits, which no NaN is.
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
