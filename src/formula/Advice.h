// SPDX-License-Identifier: GPL-3.0-or-later
// Advice on common slips of people who write a formula otherwise than C does.
#pragma once

#include "formula/ExpressionFault.h"

#include <string>
#include <string_view>

namespace vexa::formula {

/// Returns a sentence that says how to write the part of the formula at the fault if it is a common
/// slip; otherwise an empty text.
std::string AdviceFor(std::string_view formula, const ExpressionFault& fault);

} // namespace vexa::formula
