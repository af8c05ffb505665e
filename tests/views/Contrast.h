// SPDX-License-Identifier: GPL-3.0-or-later
// The contrast of two colours, by WCAG 2.1.
#pragma once

#include "kits/interface/InterfaceDefs.h"

#include <algorithm>
#include <cmath>

namespace test {

/// Returns the relative luminance, from 0 for black to 1 for white.
inline double Luminance(rgb_color color) {
    const auto linear = [](uint8 value) {
        const double s = value / 255.0;
        return s <= 0.04045 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.red) + 0.7152 * linear(color.green) + 0.0722 * linear(color.blue);
}

/// Returns the ratio of the luminances, from 1 to 21.
inline double Contrast(rgb_color a, rgb_color b) {
    const double low = std::min(Luminance(a), Luminance(b));
    const double high = std::max(Luminance(a), Luminance(b));
    return (high + 0.05) / (low + 0.05);
}

} // namespace test
