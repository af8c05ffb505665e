// SPDX-License-Identifier: GPL-3.0-or-later
// The sound from which the making of a new one starts.
#pragma once

#include "documents/Sound.h"

namespace vexa {

constexpr const char* kInitialSoundName = "new sound";

/// Returns a sound whose function is a new `Function` and whose orbit is a circle round the origin.
/// Notes begin and end at once and without a click, centre and radius are constant, and bend wheel
/// and pedal have an effect.
Sound InitialSound();

} // namespace vexa
