// SPDX-License-Identifier: GPL-3.0-or-later
// The style of the controls: compact, and the same on every desktop.
#pragma once

namespace kits {

/// Sets the style of controls, in light colours until SetControlColors sets others. Before that it
/// records for DesktopIsDark whether the desktop's own colours are dark.
void SetAppearance();

} // namespace kits
