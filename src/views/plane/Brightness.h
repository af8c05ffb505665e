// SPDX-License-Identifier: GPL-3.0-or-later
// This says how bright a value of the plane function is shown.
#pragma once

#include "kits/support/SupportDefs.h"

#include <span>
#include <string_view>

namespace vexa {

/// Linear is the picture that is exported and DrawPlane draws, in which values beyond +-1 carry
/// into other colours; in the others they are as bright as +-1.
enum class Brightness : uint8 { Linear, SquareRoot, Logarithmic, Strongest };

struct BrightnessRow {
    Brightness curve;
    /// The name in a menu, and in the settings.
    std::string_view label;
    std::string_view key;
};
/// Returns the curves in the order of the enumeration.
std::span<const BrightnessRow> BrightnessCurves();

/// Returns how bright, 0..1, a value of that size is. Logarithmic shows sizes from 1/4096 on,
/// Strongest shows what is `strongest` as 1. What is not finite gives 0.
float BrightnessOf(Brightness curve, float size, float strongest);

/// The size that all but two of a hundred values stay below; 0 for none, and where all are 0.
/// Values that are not finite do not count.
float StrongestOf(std::span<const float> values);

/// Computes the pixels of the values.
void ShowValues(Brightness curve, std::span<const float> values, uint32* words);

} // namespace vexa
