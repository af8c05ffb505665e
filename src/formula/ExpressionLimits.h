// SPDX-License-Identifier: GPL-3.0-or-later
// The limits of an expression's size.
#pragma once

#include <cstddef>

namespace vexa {

/// The longest expression, in bytes.
constexpr std::size_t kLongestExpression = 65536;
/// The deepest nesting of parentheses, calls, signs, casts and ?:, each level of which takes stack
/// in whatever reads the expression.
constexpr int kDeepestExpression = 256;
/// The highest order of jn and yn, whose running time is proportional to the order.
constexpr int kHighestOrder = 100;

} // namespace vexa
