// SPDX-License-Identifier: GPL-3.0-or-later
// What the boxes in the logo bar are drawn with, which is dark in every set of colours.
#pragma once

#include "kits/interface/InterfaceDefs.h"

namespace vexa {

constexpr rgb_color kBox = {14, 18, 44};
constexpr rgb_color kBoxEdge = {70, 80, 120};
/// The radius of their corners, in pixels.
constexpr float kBoxCorner = 4;

} // namespace vexa
