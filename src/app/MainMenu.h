// SPDX-License-Identifier: GPL-3.0-or-later
// The menu of what has no place of its own in the window.
#pragma once

class BMenu;

namespace vexa {

class VexaWindow;

/// Fills the menu anew, with marks for what is so at present. Messages about what the main view
/// does go to it, the others to the window. Window thread.
void FillMainMenu(BMenu& menu, VexaWindow& window);

} // namespace vexa
