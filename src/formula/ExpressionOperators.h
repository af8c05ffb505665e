// SPDX-License-Identifier: GPL-3.0-or-later
// The binary operators that an expression may contain.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace vexa {

struct BinaryOperator {
    std::string_view text;
    /// An operator of higher precedence binds more tightly.
    int precedence;
    /// True if the result is an integer for operands of any type.
    bool integer;
};

constexpr auto kBinaryOperators = std::to_array<BinaryOperator>({
    {"*", 10, false},
    {"/", 10, false},
    {"%", 10, false},
    {"+", 9, false},
    {"-", 9, false},
    {"<<", 8, true},
    {">>", 8, true},
    {"<", 7, true},
    {">", 7, true},
    {"<=", 7, true},
    {">=", 7, true},
    {"==", 6, true},
    {"!=", 6, true},
    {"&", 5, true},
    {"^", 4, true},
    {"|", 3, true},
    {"&&", 2, true},
    {"||", 1, true},
});

/// Returns the row of an operator, or null.
inline const BinaryOperator* FindBinaryOperator(std::string_view text) {
    const auto found = std::find_if(kBinaryOperators.begin(), kBinaryOperators.end(),
                                    [text](const BinaryOperator& row) { return row.text == text; });
    return found == kBinaryOperators.end() ? nullptr : &*found;
}

} // namespace vexa
