// SPDX-License-Identifier: GPL-3.0-or-later
// How everything looks: one light palette and compact controls, on every desktop.
#pragma once

class QApplication;

namespace kits {

/// The colours around the plane and the envelopes are fixed, so those of the controls are as well.
void SetAppearance(QApplication& application);

} // namespace kits
