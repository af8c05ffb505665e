// SPDX-License-Identifier: GPL-3.0-or-later
// This puts double in the place of long double.
#pragma once

#include <string>
#include <string_view>

namespace vexa {

/// Returns the expression with double in place of long double, in constants, types and functions of
/// the C maths library. The x87 unit takes a hundred times as long for some of them, and no other
/// machine has its format. The expression is to be one that CheckExpression accepts; any other is
/// answered as some text of its tokens.
std::string WithoutLongDouble(std::string_view expression);

} // namespace vexa
