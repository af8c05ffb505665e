// SPDX-License-Identifier: GPL-3.0-or-later
// This decides what may reach the compiler. An expression comes from whoever wrote the sound. It is
// compiled into this process, so everything that is not arithmetic is refused here, before the
// compiler sees it.
#pragma once

#include "formula/ExpressionFault.h"
#include "formula/ExpressionLimits.h"

#include <optional>
#include <string_view>

namespace vexa {

/// Returns nothing if the expression is one of ExpressionGrammar.h whose names are x and y, the
/// functions of the maths library that take and return numbers, and the constants of its header;
/// otherwise the fault. Types are the compiler's business, with two exceptions: a whole number may
/// only be divided by a positive one that is written out, since a division by 0 would end the
/// program, and so must be the order of jn and yn. It takes time proportional to the length, and
/// bounded stack. Any thread.
std::optional<ExpressionFault> CheckExpression(std::string_view expression);

} // namespace vexa
