// SPDX-License-Identifier: GPL-3.0-or-later
// This sets how everything looks: compact controls, which are the same on every desktop.
#pragma once

namespace kits {

/// Sets the style of controls, in light colours until SetControlColors gives others. It notes what
/// the desktop has chosen, for DesktopIsDark.
void SetAppearance();

} // namespace kits
