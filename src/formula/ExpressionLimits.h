// SPDX-License-Identifier: GPL-3.0-or-later
// These limits say how large an expression may be.
#pragma once

#include <cstddef>

namespace vexa {

/// The longest expression, in bytes.
constexpr std::size_t kLongestExpression = 65536;
/// Deepest nesting of parentheses, calls, signs, casts and ?:, which readers follow with a deeper
/// stack.
constexpr int kDeepestExpression = 256;
/// Highest order of jn and yn, whose running time is proportional to it.
constexpr int kHighestOrder = 100;

} // namespace vexa
