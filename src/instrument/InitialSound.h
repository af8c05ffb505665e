// SPDX-License-Identifier: GPL-3.0-or-later
// The sound to begin with for one who makes another.
#pragma once

#include "documents/Sound.h"

namespace vexa {

constexpr const char* kInitialSoundName = "new sound";

/// A ring round the origin of the plane that a new window has: it begins and ends at once and
/// without a click, stays where it is and as it is, and answers wheel and pedal.
Sound InitialSound();

} // namespace vexa
