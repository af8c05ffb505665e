// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NumberStep.h"

#include "kits/interface/InterfaceDefs.h"
#include "kits/support/NumberText.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr double kLeastStep = 0.01;

double StepOf(double number, uint32 modifiers, bool whole) {
    double step = 1;
    if (!whole) {
        const double size = std::max(std::fabs(number), 10 * kLeastStep);
        // The factor makes up for rounding, as 0.1 + 0.2 is not quite 0.3.
        step = std::max(std::pow(10, std::floor(std::log10(size * (1 + 1e-9))) - 1), kLeastStep);
    }
    if (modifiers & B_CONTROL_KEY)
        step *= 10;
    if ((modifiers & B_SHIFT_KEY) && !whole)
        step /= 10;
    return step;
}

} // namespace

std::string Stepped(const std::string& text, int steps, uint32 modifiers,
                    const NumberRange& range) {
    const double read = kits::NumberOf(text);
    double number = std::isfinite(read) ? read : 0;
    if (range.whole)
        number = std::trunc(number);
    number += steps * StepOf(number, modifiers, range.whole);
    return kits::ShortText(std::clamp(number, range.least, range.most));
}

} // namespace vexa
