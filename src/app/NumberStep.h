// SPDX-License-Identifier: GPL-3.0-or-later
// Steps of the number in a field, by wheel or arrow keys.
#pragma once

#include "kits/support/SupportDefs.h"

#include <string>

namespace vexa {

/// The range of a field's number.
struct NumberRange {
    double least = -1e6;
    double most = 1e6;
    bool whole = false;
};

/// Returns the text of the number that is `steps` steps further, within the range. A step is 1 in
/// the second significant digit of the number, at least 0.01, or 1 for whole numbers. Shift divides
/// the step by ten unless the number is whole; Ctrl multiplies it by ten. `modifiers` is the sum of
/// B_SHIFT_KEY and B_CONTROL_KEY as they are held.
std::string Stepped(const std::string& text, int steps, uint32 modifiers, const NumberRange& range);

} // namespace vexa
