// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/ExpressionTokens.h"

#include "kits/support/Quoted.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <vector>

namespace vexa {

namespace {

// The character classes of the C locale, independent of the program's locale.
constexpr std::string_view kOctal = "01234567";
constexpr std::string_view kDecimal = "0123456789";
constexpr std::string_view kHexadecimal = "0123456789abcdefABCDEF";
constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_";

bool IsIn(char character, std::string_view set) {
    return set.find(character) != std::string_view::npos;
}

struct Punctuator {
    std::string_view text;
    /// The reason for refusing it; null if expressions may contain it.
    const char* reason;
};

constexpr const char* kAssignment = "nothing can be assigned in an expression";
constexpr const char* kPreprocessor = "the preprocessor cannot be used in an expression";
constexpr const char* kComment = "an expression has no comments";
constexpr const char* kBracket = "brackets and braces have no place in an expression";
constexpr const char* kText = "an expression has no texts or characters";

/// A punctuator stands before all shorter ones with which it begins.
constexpr auto kPunctuators = std::to_array<Punctuator>({
    {"<<=", kAssignment},
    {">>=", kAssignment},
    {"++", "nothing can be counted up in an expression (to add a signed term, set a blank: + +)"},
    {"--", "nothing can be counted down in an expression (to subtract a negative term, set a "
           "blank: - -)"},
    {"->", "an expression has no structures"},
    {"<<", nullptr},
    {">>", nullptr},
    {"<=", nullptr},
    {">=", nullptr},
    {"==", nullptr},
    {"!=", nullptr},
    {"&&", nullptr},
    {"||", nullptr},
    {"+=", kAssignment},
    {"-=", kAssignment},
    {"*=", kAssignment},
    {"/=", kAssignment},
    {"%=", kAssignment},
    {"&=", kAssignment},
    {"|=", kAssignment},
    {"^=", kAssignment},
    {"//", kComment},
    {"/*", kComment},
    {"<:", kBracket},
    {":>", kBracket},
    {"<%", kBracket},
    {"%>", kBracket},
    {"%:", kPreprocessor},
    {"=", kAssignment},
    {"#", kPreprocessor},
    {"[", kBracket},
    {"]", kBracket},
    {"{", kBracket},
    {"}", kBracket},
    {"\"", kText},
    {"'", kText},
    {"\\", "a backslash has no place in an expression"},
    {";", "an expression has no statements"},
    {"+", nullptr},
    {"-", nullptr},
    {"*", nullptr},
    {"/", nullptr},
    {"%", nullptr},
    {"<", nullptr},
    {">", nullptr},
    {"!", nullptr},
    {"~", nullptr},
    {"&", nullptr},
    {"|", nullptr},
    {"^", nullptr},
    {"?", nullptr},
    {":", nullptr},
    {"(", nullptr},
    {")", nullptr},
    {",", nullptr},
});

/// Reads the parts of a number from left to right.
class NumberText {
  public:
    explicit NumberText(std::string_view rest) : rest(rest) {}

    std::string_view Run(std::string_view set) {
        const std::string_view run = rest.substr(0, rest.find_first_not_of(set));
        rest.remove_prefix(run.size());
        return run;
    }
    bool AcceptOneOf(std::string_view set) {
        const bool accepted = !rest.empty() && IsIn(rest.front(), set);
        rest.remove_prefix(accepted ? 1 : 0);
        return accepted;
    }
    std::string_view Rest() const { return rest; }

  private:
    std::string_view rest;
};

/// Returns true for a valid suffix of an integer, which may be empty.
bool IsIntegerSuffix(std::string_view text) {
    constexpr auto kLong = std::to_array<std::string_view>({"l", "L", "ll", "LL", ""});
    if (text.starts_with('u') || text.starts_with('U'))
        text.remove_prefix(1);
    else if (text.ends_with('u') || text.ends_with('U'))
        text.remove_suffix(1);
    return std::find(kLong.begin(), kLong.end(), text) != kLong.end();
}

/// Sets `integer` and `written` of a number token; returns false if C has no such number. Imaginary
/// and binary numbers, which compilers add to C, are refused.
bool ReadNumber(Token& token) {
    NumberText number(token.text);
    const bool hexadecimal = token.text.starts_with("0x") || token.text.starts_with("0X");
    if (hexadecimal)
        number = NumberText(token.text.substr(2));
    const std::string_view set = hexadecimal ? kHexadecimal : kDecimal;

    const std::string_view whole = number.Run(set);
    const bool point = number.AcceptOneOf(".");
    const std::string_view fraction = point ? number.Run(set) : std::string_view();
    if (whole.empty() && fraction.empty())
        return false;
    const bool exponent = number.AcceptOneOf(hexadecimal ? "pP" : "eE");
    if (exponent) {
        number.AcceptOneOf("+-");
        if (number.Run(kDecimal).empty())
            return false;
    }
    if (point || exponent) {
        number.AcceptOneOf("fFlL");
        return number.Rest().empty() && (exponent || !hexadecimal);
    }

    const bool octal = !hexadecimal && whole.starts_with('0');
    if (octal && whole.find_first_not_of(kOctal) != std::string_view::npos)
        return false;
    token.integer = true;
    unsigned long long value = 0;
    const auto read = std::from_chars(whole.data(), whole.data() + whole.size(), value,
                                      hexadecimal ? 16
                                      : octal     ? 8
                                                  : 10);
    if (read.ec == std::errc())
        token.written = value;
    return IsIntegerSuffix(number.Rest());
}

/// Returns true if an integer fits none of C's types. A decimal number without the suffix u is
/// signed; for a larger one gcc takes 128 bits, which need a library of their own.
bool IsTooLarge(const Token& token) {
    if (!token.integer || !token.written)
        return token.integer;
    const bool decimal = !token.text.starts_with('0');
    const bool isSigned = token.text.find_first_of("uU") == std::string_view::npos;
    return decimal && isSigned && *token.written > std::numeric_limits<long long>::max();
}

/// Returns the length of the text at the start of `text` that C reads as a number, well-formed or
/// not: "0x1e+5" is one token but not a valid number.
std::size_t NumberLength(std::string_view text) {
    std::size_t length = 1;
    while (length < text.size()) {
        const char character = text[length];
        const bool sign = IsIn(character, "+-") && IsIn(text[length - 1], "eEpP");
        if (!sign && character != '.' && !IsIn(character, kDecimal) && !IsIn(character, kLetters))
            break;
        length++;
    }
    return length;
}

std::string DescribeByte(char character) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte == '\n' || byte == '\r')
        return "an expression has one line";
    if (byte < ' ' || byte == 0x7f)
        return "control characters have no place in an expression";
    if (byte >= 0x80)
        return "an expression consists of ASCII characters";
    return kits::Quoted({&character, 1}) + " has no place in an expression";
}

} // namespace

Token ExpressionTokens::Next() {
    position = std::min(text.find_first_not_of(" \t", position), text.size());
    const std::string_view rest = text.substr(position);
    Token token;
    token.position = position;
    if (rest.empty())
        return token;

    const auto take = [&](Token::Kind kind, std::size_t length) {
        token.kind = kind;
        token.text = rest.substr(0, length);
        position += length;
    };
    if (IsIn(rest[0], kDecimal) || (rest[0] == '.' && rest.size() > 1 && IsIn(rest[1], kDecimal))) {
        take(Token::Kind::number, NumberLength(rest));
        const bool isNumber = ReadNumber(token);
        if (!isNumber || IsTooLarge(token)) {
            token.kind = Token::Kind::refused;
            token.reason = kits::Quoted(token.text) +
                           (isNumber ? " is larger than 64 bits hold" : " is not a number");
        }
        return token;
    }
    if (IsIn(rest[0], kLetters)) {
        const auto end = std::find_if(rest.begin(), rest.end(), [](char character) {
            return !IsIn(character, kLetters) && !IsIn(character, kDecimal);
        });
        take(Token::Kind::word, static_cast<std::size_t>(end - rest.begin()));
        return token;
    }
    const auto found =
        std::find_if(kPunctuators.begin(), kPunctuators.end(),
                     [rest](const Punctuator& row) { return rest.starts_with(row.text); });
    if (found == kPunctuators.end()) {
        take(Token::Kind::refused, 1);
        token.reason = DescribeByte(rest[0]);
    } else if (found->reason) {
        take(Token::Kind::refused, found->text.size());
        token.reason = found->reason;
    } else {
        take(Token::Kind::punctuator, found->text.size());
    }
    return token;
}

bool IsTypeWord(std::string_view word) {
    constexpr auto kWords = std::to_array<std::string_view>(
        {"char", "short", "int", "long", "signed", "unsigned", "float", "double", "_Bool"});
    return std::find(kWords.begin(), kWords.end(), word) != kWords.end();
}

std::optional<ArithmeticType> TypeOfWords(std::span<const std::string_view> words) {
    using enum ArithmeticType::Kind;
    struct Row {
        /// The words in alphabetical order; C allows any order.
        std::string_view words;
        ArithmeticType type;
    };
    constexpr auto kTypes = std::to_array<Row>({
        {"_Bool", {boolean, 1, false}},
        {"char", {integer, 8}},
        {"char signed", {integer, 8}},
        {"char unsigned", {integer, 8, false}},
        {"short", {integer, 16}},
        {"short signed", {integer, 16}},
        {"int short", {integer, 16}},
        {"int short signed", {integer, 16}},
        {"short unsigned", {integer, 16, false}},
        {"int short unsigned", {integer, 16, false}},
        {"int", {integer, 32}},
        {"signed", {integer, 32}},
        {"int signed", {integer, 32}},
        {"unsigned", {integer, 32, false}},
        {"int unsigned", {integer, 32, false}},
        {"long", {integer, 64}},
        {"long signed", {integer, 64}},
        {"int long", {integer, 64}},
        {"int long signed", {integer, 64}},
        {"long unsigned", {integer, 64, false}},
        {"int long unsigned", {integer, 64, false}},
        {"long long", {integer, 64}},
        {"long long signed", {integer, 64}},
        {"int long long", {integer, 64}},
        {"int long long signed", {integer, 64}},
        {"long long unsigned", {integer, 64, false}},
        {"int long long unsigned", {integer, 64, false}},
        {"float", {floating, 32}},
        {"double", {floating, 64}},
        {"double long", {floating, 64}},
    });
    std::vector<std::string_view> sorted(words.begin(), words.end());
    std::sort(sorted.begin(), sorted.end());
    std::string name;
    for (const std::string_view word : sorted) {
        if (!name.empty())
            name += ' ';
        name += word;
    }
    const auto found = std::find_if(kTypes.begin(), kTypes.end(),
                                    [&name](const Row& row) { return row.words == name; });
    if (found == kTypes.end())
        return std::nullopt;
    return found->type;
}

} // namespace vexa
