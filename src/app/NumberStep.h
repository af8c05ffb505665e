// SPDX-License-Identifier: GPL-3.0-or-later
// Numbers that a person turns up and down.
#pragma once

#include "kits/support/SupportDefs.h"

#include <string>

namespace vexa {

/// The range of numbers that a field may have.
struct NumberRange {
    double least = -1e6;
    double most = 1e6;
    bool whole = false;
};

/// Returns the text so many steps on, within the range. A step is one in the second digit of the
/// number, at least 0.01, or for whole numbers 1; with Shift held a tenth of that where there are
/// fractions, with Ctrl ten times as much. `modifiers` is the sum of B_SHIFT_KEY and B_CONTROL_KEY.
std::string Stepped(const std::string& text, int steps, uint32 modifiers, const NumberRange& range);

} // namespace vexa
