// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/Advice.h"

#include "formula/ExpressionTokens.h"
#include "formula/ExpressionWords.h"
#include "formula/FormulaActions.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace vexa::formula {

namespace {

struct Slip {
    std::string_view written;
    std::string_view advice;
};

/// Names from other languages and from habit, in small letters.
constexpr auto kNames = std::to_array<Slip>({
    {"pi", "write M_PI"},
    {"tau", "write 2*M_PI"},
    {"e", "write M_E, or exp(x) for a power of it"},
    {"abs", "write fabs(x)"},
    {"min", "write fmin(x, y)"},
    {"max", "write fmax(x, y)"},
    {"mod", "write fmod(x, 2)"},
    {"rem", "write fmod(x, 2)"},
    {"ln", "write log(x)"},
    {"lg", "write log10(x)"},
    {"power", "write pow(x, 2)"},
    {"sqr", "write x*x"},
    {"arcsin", "write asin(x)"},
    {"arccos", "write acos(x)"},
    {"arctan", "write atan(x)"},
    {"tg", "write tan(x)"},
    {"sgn", "write copysign(1, x)"},
    {"sign", "write copysign(1, x)"},
    {"int", "write (int)x, or floor(x)"},
    {"frac", "write x-floor(x)"},
    {"fract", "write x-floor(x)"},
    {"clamp", "write fmin(fmax(x, -1), 1)"},
    {"if", "write x>0 ? 1 : 2"},
    {"and", "write &&"},
    {"or", "write ||"},
    {"not", "write !"},
    {"inf", "write INFINITY"},
    {"velocity", "write vel"},
    {"time", "write t"},
    {"note", "write key"},
    {"cc", "write ctl(1)"},
    {"z", "a formula is of x and y"},
    {"r", "write sqrt(x*x+y*y)"},
    {"theta", "write atan2(y, x)"},
});

/// Those of the names that other languages put between two operands.
constexpr std::string_view kBetween[] = {"and", "or", "mod", "rem", "power", "if"};

/// Signs of other notations. The refused token holds only the first byte of a sign.
constexpr auto kSigns = std::to_array<Slip>({
    {"\xc3\x97", "to multiply write *"},
    {"\xc2\xb7", "to multiply write *"},
    {"\xc3\xb7", "to divide write /"},
    {"\xe2\x88\x92", "to subtract write -"},
    {"\xe2\x80\x93", "to subtract write -"},
    {"\xcf\x80", "write M_PI"},
    {"\xc2\xb2", "for a square write x*x"},
    {"\xc2\xb3", "for a cube write pow(x, 3)"},
    {"\xe2\x88\x9a", "for a root write sqrt(x)"},
    {"\xe2\x89\xa4", "to compare write <="},
    {"\xe2\x89\xa5", "to compare write >="},
    {"\xe2\x89\xa0", "to compare write !="},
    {"=", "to compare write =="},
    {"[", "write ( for every bracket"},
    {"{", "write ( for every bracket"},
    {"]", "write ) for every bracket"},
    {"}", "write ) for every bracket"},
});

std::vector<std::string_view> KnownNames() {
    std::vector<std::string_view> names = InputNames();
    for (const auto& rows : {MathFunctions(), MathMacros()}) {
        for (const MathFunction& row : rows)
            names.push_back(row.name);
    }
    for (const MathConstant& row : MathConstants())
        names.push_back(row.name);
    return names;
}

bool IsKnown(std::string_view name) {
    const std::vector<std::string_view> known = KnownNames();
    return std::ranges::find(known, name) != known.end() || FindMathFunction(name) || name == "ctl";
}

/// Returns the word in small letters.
std::string Lowered(std::string_view word) {
    std::string lower(word);
    std::ranges::transform(lower, lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter | 0x20) : letter;
    });
    return lower;
}

/// Returns the known name that a word stands for, such as "x" for "X" or "M_PI" for "pi"; the word
/// itself if there is none.
std::string Meant(std::string_view word) {
    const std::string lower = Lowered(word);
    if (IsKnown(word))
        return std::string(word);
    if (IsKnown(lower))
        return lower;
    constexpr std::string_view kWrite = "write ";
    for (const Slip& slip : kNames) {
        if (slip.written != lower || !slip.advice.starts_with(kWrite))
            continue;
        const std::string_view advised = slip.advice.substr(kWrite.size());
        if (const auto name = advised.substr(0, advised.find(',')); IsKnown(name))
            return std::string(name);
    }
    return std::string(word);
}

/// Returns the number of edits that turn one name into the other, ignoring case: a character is
/// inserted, deleted or replaced, or two neighbours are exchanged.
std::size_t Distance(std::string_view a, std::string_view b) {
    const auto same = [](char one, char other) { return (one | 0x20) == (other | 0x20); };
    std::vector<std::vector<std::size_t>> rows(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
    std::iota(rows[0].begin(), rows[0].end(), std::size_t(0));
    for (std::size_t i = 1; i <= a.size(); i++) {
        rows[i][0] = i;
        for (std::size_t k = 1; k <= b.size(); k++) {
            rows[i][k] = std::min({rows[i - 1][k] + 1, rows[i][k - 1] + 1,
                                   rows[i - 1][k - 1] + (same(a[i - 1], b[k - 1]) ? 0 : 1)});
            if (i > 1 && k > 1 && same(a[i - 1], b[k - 2]) && same(a[i - 2], b[k - 1]))
                rows[i][k] = std::min(rows[i][k], rows[i - 2][k - 2] + 1);
        }
    }
    return rows.back().back();
}

/// Returns the advice for a word that is not a known name, or an empty text.
std::string NameAdvice(std::string_view word) {
    const std::string lower = Lowered(word);
    for (const Slip& slip : kNames) {
        if (slip.written == lower)
            return std::string(slip.advice);
    }
    if (IsKnown(lower))
        return "did you mean " + lower + "?";
    // There is no advice for another single letter, a word longer than any name, or a misplaced
    // word of a type.
    if (word.size() < 2 || word.size() > 20 || IsTypeWord(word))
        return "";
    // "xy" is the product of two names.
    if (word.find_first_not_of("xy") == std::string_view::npos) {
        std::string product;
        for (const char letter : word)
            product += product.empty() ? std::string{letter} : std::string{'*', letter};
        return "to multiply write " + product.substr(0, 20);
    }
    // Among equally near names, one of the same length wins.
    std::string_view nearest;
    std::size_t least = 2 * (1 + word.size() / 4) + 2;
    for (const std::string_view name : KnownNames()) {
        const std::size_t distance =
            2 * Distance(word, name) + (name.size() == word.size() ? 0 : 1);
        if (name.size() > 1 && distance < least) {
            least = distance;
            nearest = name;
        }
    }
    return nearest.empty() ? "" : "did you mean " + std::string(nearest) + "?";
}

bool IsWord(const Token& token, std::string_view& name) {
    name = token.text;
    return token.kind == Token::Kind::word;
}

/// Returns the advice for text such as "2x", which C reads as one malformed number.
std::string ProductAdvice(std::string_view number) {
    constexpr std::string_view kHexadecimal = "0123456789abcdefABCDEF";
    if ((number.starts_with("0x") || number.starts_with("0X")) && number.size() > 2 &&
        kHexadecimal.find(number[2]) != std::string_view::npos)
        return "";
    const std::size_t digits = number.find_first_not_of("0123456789.");
    if (digits == 0 || digits == std::string_view::npos)
        return number.find('.') != number.rfind('.') ? "a number has one decimal point" : "";
    if (number.size() > 40)
        return "";
    return "to multiply write " + std::string(number.substr(0, digits)) + "*" +
           Meant(number.substr(digits));
}

bool HasMoreClosing(std::string_view text) {
    return std::count(text.begin(), text.end(), ')') > std::count(text.begin(), text.end(), '(');
}

/// Returns the position, counted from 1, of the innermost parenthesis that is not closed; 0 if all
/// are.
std::size_t Unclosed(std::string_view text) {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < text.size(); i++) {
        if (text[i] == '(')
            open.push_back(i + 1);
        else if (text[i] == ')' && !open.empty())
            open.pop_back();
    }
    return open.empty() ? 0 : open.back();
}

bool EndsOperand(const Token& token) {
    return token.kind == Token::Kind::number || token.kind == Token::Kind::word ||
           token.text == ")";
}

} // namespace

std::string AdviceFor(std::string_view formula, const ExpressionFault& fault) {
    ExpressionTokens tokens(formula);
    Token before, here = tokens.Next();
    while (here.kind != Token::Kind::end && here.position < fault.position) {
        before = here;
        here = tokens.Next();
    }
    const std::string_view rest = formula.substr(std::min(fault.position, formula.size()));
    if (here.position != fault.position && here.kind != Token::Kind::end)
        return "";
    const Token after = here.kind == Token::Kind::end ? Token() : tokens.Next();
    const bool number = here.kind == Token::Kind::number;
    std::string_view name;

    if (here.kind == Token::Kind::refused) {
        if (rest[0] == '.' || (rest[0] >= '0' && rest[0] <= '9'))
            return ProductAdvice(here.text);
        for (const Slip& slip : kSigns) {
            if (rest.starts_with(slip.written))
                return std::string(slip.advice);
        }
        return "";
    }
    if (here.kind == Token::Kind::end) {
        if (const std::size_t place = Unclosed(formula))
            return "the ( at character " + std::to_string(place) + " is not closed";
        return "";
    }
    if (here.text == "," && before.integer && after.integer)
        return "write a decimal point: " + std::string(before.text) + "." + std::string(after.text);
    if (here.text == "," && EndsOperand(before))
        return "a comma only separates the arguments of a function";
    if (here.text == ")" && HasMoreClosing(formula))
        return "no ( is open that it could close";
    if (here.text == "*" && before.text == "*")
        return "for a power write pow(x, 2)";
    if (here.text == "|")
        return "for a magnitude write fabs(x)";
    // Either a name stands where one may, or an operator is missing before it.
    if (IsWord(here, name) && !EndsOperand(before)) {
        const bool isFunction = FindMathFunction(name) || name == "ctl";
        if (!IsKnown(name))
            return NameAdvice(name);
        if (!isFunction || after.text == "(")
            return "";
        const bool follows = after.kind == Token::Kind::word || after.kind == Token::Kind::number;
        const std::string_view argument = follows ? after.text : name == "ctl" ? "1" : "x";
        return "write " + std::string(name) + "(" + std::string(argument) + ")";
    }
    if (IsWord(here, name) && std::ranges::find(kBetween, Lowered(name)) != std::end(kBetween))
        return NameAdvice(name);
    if (EndsOperand(before) && (number || IsWord(here, name) || here.text == "(")) {
        const bool isShort = before.text.size() + here.text.size() < 40;
        return "to multiply write *" +
               (isShort ? ": " + std::string(before.text) + "*" + Meant(here.text) : std::string());
    }
    return "";
}

} // namespace vexa::formula
