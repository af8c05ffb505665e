// SPDX-License-Identifier: GPL-3.0-or-later
// The orientation of a picture: how the camera was held, as EXIF stores it (CIPA DC-008, 4.6.5, the
// tag Orientation).
#pragma once

#include "kits/pictures/PictureFile.h"

namespace kits {

/// Returns the orientation, 1..8, from EXIF data that starts with the byte order mark. If the data
/// has none or is damaged, returns 1, which means upright.
int OrientationOf(std::string_view exif);

/// Returns the picture turned and mirrored so that it is upright.
BrightnessMap Upright(BrightnessMap map, int orientation);

} // namespace kits
