// SPDX-License-Identifier: GPL-3.0-or-later
// Splits an expression into the tokens of C.
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
    /// True if the token is an integer constant of C. `written` is then its value, if 64 bits hold
    /// it.
    bool integer = false;
    std::optional<unsigned long long> written;
    /// The reason why the token is refused.
    std::string reason;
};

/// Reads an expression from left to right. Each token is the longest that C would read there, so
/// that CheckExpression sees the same tokens as the compiler. Tokens of C that do not belong in an
/// expression of numbers are refused, and so is every other byte.
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

/// Returns true if the word can be part of the name of an arithmetic type.
bool IsTypeWord(std::string_view word);

/// An arithmetic type that a cast may name.
struct ArithmeticType {
    enum class Kind { boolean, integer, floating };
    Kind kind;
    /// A long double counts as a double of 64 bits.
    int bits;
    /// A plain char is signed.
    bool isSigned = true;
};

/// Returns the type that the words name, in any order that C allows; nothing if they name none.
std::optional<ArithmeticType> TypeOfWords(std::span<const std::string_view> words);

} // namespace vexa
