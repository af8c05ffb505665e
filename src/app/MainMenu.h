// SPDX-License-Identifier: GPL-3.0-or-later
// The main menu, with the commands that have no place of their own in the window.
#pragma once

class BMenu;

namespace vexa {

class VexaWindow;

/// Replaces the items of the menu, and marks those that apply at present. Commands for the main
/// view go to it, all others to the window. Window thread.
void FillMainMenu(BMenu& menu, VexaWindow& window);

} // namespace vexa
