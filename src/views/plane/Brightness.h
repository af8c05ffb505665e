// SPDX-License-Identifier: GPL-3.0-or-later
// How bright a value of the plane function is shown.
#pragma once

#include "kits/support/SupportDefs.h"

#include <span>
#include <string_view>

namespace vexa {

/// The brightness curves. Linear is that of exported pictures and of DrawPlane, where values beyond
/// +-1 carry into other colours. The others clip at full brightness.
enum class Brightness : uint8 { Linear, SquareRoot, Logarithmic, Strongest };

struct BrightnessRow {
    Brightness curve;
    /// The name in a menu, and the key in the settings.
    std::string_view label;
    std::string_view key;
};
/// Returns the curves in the order of the enumeration.
std::span<const BrightnessRow> BrightnessCurves();

/// Returns the brightness, 0..1, of a value of absolute value `size`. Logarithmic shows sizes from
/// 1/4096 on; Strongest shows the size `strongest` as 1. A size that is not finite gives 0.
float BrightnessOf(Brightness curve, float size, float strongest);

/// Returns about the 98th percentile of the values' sizes, taken from a sample of them. Values that
/// are not finite are ignored; without any other the result is 0.
float StrongestOf(std::span<const float> values);

/// Computes the pixels of the values, one word each.
void ShowValues(Brightness curve, std::span<const float> values, uint32* words);

} // namespace vexa
