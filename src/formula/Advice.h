// SPDX-License-Identifier: GPL-3.0-or-later
// What people mean who write a formula otherwise than C does.
#pragma once

#include "formula/ExpressionFault.h"

#include <string>
#include <string_view>

namespace vexa::formula {

/// How to write what stands at the fault, where it is a usual slip; else nothing.
std::string AdviceFor(std::string_view formula, const ExpressionFault& fault);

} // namespace vexa::formula
