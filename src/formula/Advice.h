// SPDX-License-Identifier: GPL-3.0-or-later
// This guesses what people mean who write a formula otherwise than C does.
#pragma once

#include "formula/ExpressionFault.h"

#include <string>
#include <string_view>

namespace vexa::formula {

/// Returns a sentence that tells how to write what stands at the fault, where it is a usual slip;
/// otherwise an empty text.
std::string AdviceFor(std::string_view formula, const ExpressionFault& fault);

} // namespace vexa::formula
