// SPDX-License-Identifier: GPL-3.0-or-later
// Passes the descriptions of views on to screen readers through the toolkit.
#pragma once

namespace kits {

/// From now on the toolkit's accessibility interface asks each view for its own description. It is
/// called once, in the window thread.
void DescribeViews();

} // namespace kits
