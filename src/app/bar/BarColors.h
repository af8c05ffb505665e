// SPDX-License-Identifier: GPL-3.0-or-later
// The colours of the boxes in the logo bar, which is dark in every colour set.
#pragma once

#include "kits/interface/InterfaceDefs.h"

namespace vexa {

constexpr rgb_color kBox = {14, 18, 44};
constexpr rgb_color kBoxEdge = {70, 80, 120};
/// The corner radius of the boxes, in pixels.
constexpr float kBoxCorner = 4;

} // namespace vexa
