// SPDX-License-Identifier: GPL-3.0-or-later
// This tells where one gesture of a person at mouse and keyboard ends and the next begins.
#pragma once

#include "kits/support/SupportDefs.h"

#include <functional>

namespace kits {

struct Gesture {
    /// Counts the gestures since the program began. A press of a mouse button, of Enter or of Tab,
    /// which confirm, begins one; turns of a wheel and other keys belong to the one before.
    uint64 number = 0;
    /// A mouse button is down.
    bool held = false;
};

/// Returns the gesture that goes on now. Window thread, while there is an application.
Gesture PresentGesture();

/// From now on `told` is called before a press of a mouse button or key in this program has its
/// effect. It replaces the function set before; null sets none. Window thread.
void BeforeEachPress(std::function<void()> told);

} // namespace kits
