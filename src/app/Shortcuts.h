// SPDX-License-Identifier: GPL-3.0-or-later
// The keys with a function in all of the window and in the window that describes the sound.
#pragma once

#include "kits/interface/InterfaceDefs.h"

#include <optional>

namespace vexa {

/// Returns the code of the message that the main window gets for the press (MessageCodes.h);
/// nothing if it is no shortcut.
std::optional<uint32> ShortcutCode(const kits::KeyPress& press);

} // namespace vexa
