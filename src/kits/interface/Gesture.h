// SPDX-License-Identifier: GPL-3.0-or-later
// Divides the user's input by mouse and keyboard into gestures.
#pragma once

#include "kits/support/SupportDefs.h"

#include <functional>

namespace kits {

struct Gesture {
    /// The number of gestures since the program started. A press of a mouse button begins a new
    /// one, and so does Enter or Tab, because these confirm. Wheel turns and other keys belong to
    /// the present gesture.
    uint64 number = 0;
    /// True while a mouse button is down.
    bool held = false;
};

/// Returns the present gesture. Window thread, while there is an application.
Gesture PresentGesture();

/// Sets a function that is called before each press of a mouse button or key in this program, and
/// before each release of a mouse button, takes effect. It replaces the previous function; an empty
/// one removes it. Window thread.
void AtGestureEdges(std::function<void()> notify);

} // namespace kits
