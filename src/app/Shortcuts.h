// SPDX-License-Identifier: GPL-3.0-or-later
// The keys with a function in all of the window and in the window that describes the sound. F6 and
// F7, which choose how the plane is shown, belong to the plane (views/plane).
#pragma once

#include "kits/interface/InterfaceDefs.h"

#include <optional>

namespace vexa {

/// Returns the code of the message that the main window gets for the press (MessageCodes.h);
/// nothing if it is no shortcut. Other modifiers than a shortcut's make another press.
std::optional<uint32> ShortcutCode(const kits::KeyPress& press);

} // namespace vexa
