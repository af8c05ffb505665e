// SPDX-License-Identifier: GPL-3.0-or-later
// Decides which expressions may reach the compiler. An expression comes from whoever wrote the
// sound, and is compiled into this process. Everything that is not arithmetic is therefore refused
// before the compiler sees it.
#pragma once

#include "formula/ExpressionFault.h"
#include "formula/ExpressionLimits.h"

#include <optional>
#include <string_view>

namespace vexa {

/// Returns nothing if the expression is one of ExpressionGrammar.h whose names are x, y, functions
/// of the maths library that take and return numbers, and constants of its header; otherwise the
/// fault. Types are left to the compiler, with two exceptions. The divisor of an integer division
/// must be a positive number that is written out, since a division by 0 would end the program. The
/// order of jn and yn must be written out too, and be at most kHighestOrder. Takes time
/// proportional to the length, and bounded stack. Any thread.
std::optional<ExpressionFault> CheckExpression(std::string_view expression);

} // namespace vexa
