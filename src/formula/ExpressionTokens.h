// SPDX-License-Identifier: GPL-3.0-or-later
// An expression cut into the tokens of C.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vexa {

struct Token {
    enum class Kind { end, number, word, punctuator, refused };
    Kind kind = Kind::end;
    /// The token as it stands in the expression, and the byte at which it begins.
    std::string_view text;
    std::size_t position = 0;
    /// True for a number that is a whole one in C; then its value follows if it fits.
    bool integer = false;
    std::optional<unsigned long long> written;
    /// The reason why no expression may contain it.
    std::string reason;
};

/// Reads an expression from left to right. Each token is the longest that C would take there, so
/// what the checker sees is what the compiler sees. Tokens of C that have no place in an expression
/// of numbers are refused, as is every other byte.
class ExpressionTokens {
  public:
    /// Begins at the text's start; `text` outlives this and all tokens.
    explicit ExpressionTokens(std::string_view text) : text(text) {}

    /// Returns the next token; at the end of the text, and from then on, Kind::end.
    Token Next();

  private:
    std::string_view text;
    std::size_t position = 0;
};

/// True where a word is one of those that make up the name of an arithmetic type.
bool IsTypeWord(std::string_view word);

/// An arithmetic type that a cast may name.
struct ArithmeticType {
    enum class Kind { boolean, integer, floating };
    Kind kind;
    /// A long double has those of a double.
    int bits;
    /// A char has a sign.
    bool isSigned = true;
};

/// Returns the type that the words name, in any order that C allows; nothing if they name none.
std::optional<ArithmeticType> TypeOfWords(std::span<const std::string_view> words);

} // namespace vexa
