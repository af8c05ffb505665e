// SPDX-License-Identifier: GPL-3.0-or-later
// Replaces long double by double in an expression.
#pragma once

#include <string>
#include <string_view>

namespace vexa {

/// Returns the expression with double in place of long double, in constants, types and functions of
/// the C maths library. For some functions the x87 unit takes a hundred times as long, and no other
/// machine has its format. The expression must be one that CheckExpression accepts; for any other
/// the result is some text made of its tokens.
std::string WithoutLongDouble(std::string_view expression);

} // namespace vexa
