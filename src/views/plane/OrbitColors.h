// SPDX-License-Identifier: GPL-3.0-or-later
// The colours of the orbits, one for each voice.
#pragma once

#include "kits/interface/InterfaceDefs.h"
#include "synth/Voice.h"

#include <array>

namespace vexa {

/// The colours of the orbits, in the order of the voice table. Each has a contrast of at least 3 to
/// 1 (WCAG 2.1) to all colours of a plane: black, red and blue. Neighbours differ most.
extern const std::array<rgb_color, kVoiceSlots> kOrbitColors;

} // namespace vexa
