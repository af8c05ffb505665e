// SPDX-License-Identifier: GPL-3.0-or-later
// The orientation is which way up a camera was held, as EXIF tells it (CIPA DC-008, 4.6.5, the tag
// Orientation).
#pragma once

#include "kits/pictures/PictureFile.h"

namespace kits {

/// The orientation, 1..8, in EXIF's data from its byte order on; 1, which turns nothing, where it
/// says none or what it says is damaged.
int OrientationOf(std::string_view exif);

/// The picture as it is to be seen.
BrightnessMap Upright(BrightnessMap map, int orientation);

} // namespace kits
