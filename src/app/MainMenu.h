// SPDX-License-Identifier: GPL-3.0-or-later
// The menu of what has no place of its own in the window.
#pragma once

class BMenu;

namespace vexa {

class VexaWindow;

/// Puts the items in, with marks for what is so at present, in the place of those before. What the
/// main view does goes to it, the rest to the window. Window thread.
void FillMainMenu(BMenu& menu, VexaWindow& window);

} // namespace vexa
