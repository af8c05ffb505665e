// SPDX-License-Identifier: GPL-3.0-or-later
// What a person does with mouse and keyboard, as far as it tells one gesture from the next.
#pragma once

#include "kits/support/SupportDefs.h"

#include <functional>

namespace kits {

struct Gesture {
    /// So many have begun since the program has: presses of a mouse button, and of Enter and Tab,
    /// which confirm. Turns of a wheel and other keys go on with the one before.
    uint64 number = 0;
    /// A mouse button is down.
    bool held = false;
};

/// The present one. Window thread, while there is an application.
Gesture PresentGesture();

/// Has `told` called before each press of a button or of any key of this program has an effect, in
/// place of another one; null for none. Window thread.
void BeforeEachPress(std::function<void()> told);

} // namespace kits
