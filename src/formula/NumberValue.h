// SPDX-License-Identifier: GPL-3.0-or-later
// Numbers as they are written, and the constants of the maths header, as typed values.
#pragma once

#include "formula/ExpressionTokens.h"
#include "formula/Types.h"

#include <cstdint>
#include <string_view>

namespace vexa::formula {

/// The bits of a number of 32 bits are in the lower half.
struct NumberValue {
    Type type;
    std::uint64_t bits;
};

/// Returns the value of a token that is a number, with the type that it has in C. Whole numbers
/// that no type of C holds keep their last 64 bits.
NumberValue ValueOf(const Token& number);

/// Returns the value of a name that FindMathConstant knows. Whole ones are those of x86-64 on every
/// machine.
NumberValue ConstantValue(std::string_view name);

} // namespace vexa::formula
