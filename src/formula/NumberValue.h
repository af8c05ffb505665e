// SPDX-License-Identifier: GPL-3.0-or-later
// Converts the numbers of a formula's text, and the constants of the maths header, to typed values.
#pragma once

#include "formula/ExpressionTokens.h"
#include "formula/Types.h"

#include <cstdint>
#include <string_view>

namespace vexa::formula {

/// A typed number. A 32-bit type uses the lower half of `bits`.
struct NumberValue {
    Type type;
    std::uint64_t bits;
};

/// Returns the value of a number token that a type of C holds, with that type.
NumberValue ValueOf(const Token& number);

/// Returns the value of a constant that FindMathConstant knows. Integer constants have their x86-64
/// values on every machine.
NumberValue ConstantValue(std::string_view name);

} // namespace vexa::formula
