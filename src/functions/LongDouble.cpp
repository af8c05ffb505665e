// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/LongDouble.h"

#include "formula/ExpressionTokens.h"
#include "formula/ExpressionWords.h"

#include <vector>

namespace vexa {

namespace {

/// Returns the name of the double form of a long double function or constant; any other name as it
/// is.
std::string_view DoubleForm(std::string_view name) {
    if (name == "HUGE_VALL")
        return "HUGE_VAL";
    const MathFunction* function = FindMathFunction(name);
    return function && function->name != name && name.ends_with('l') ? function->name : name;
}

} // namespace

std::string WithoutLongDouble(std::string_view expression) {
    std::vector<Token> tokens;
    ExpressionTokens reader(expression);
    do
        tokens.push_back(reader.Next());
    while (tokens.back().kind != Token::Kind::end);

    const auto isDouble = [&](std::size_t i) {
        return i < tokens.size() && tokens[i].text == "double";
    };
    std::string result;
    std::size_t copied = 0;
    for (std::size_t i = 0; i < tokens.size(); i++) {
        const Token& token = tokens[i];
        std::string_view text = token.text;
        if (token.kind == Token::Kind::number && !token.integer &&
            (text.ends_with('L') || text.ends_with('l')))
            text.remove_suffix(1);
        else if (token.kind == Token::Kind::word)
            // C allows the words of a type in any order. For the first token `i - 1` wraps around
            // and is out of range.
            text = text == "long" && (isDouble(i + 1) || isDouble(i - 1)) ? "" : DoubleForm(text);
        result += expression.substr(copied, token.position - copied);
        result += text;
        copied = token.position + token.text.size();
    }
    result += expression.substr(copied);
    return result;
}

} // namespace vexa
