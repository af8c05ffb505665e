// SPDX-License-Identifier: GPL-3.0-or-later
// The toolkit's side of what a view tells those who cannot see it.
#pragma once

namespace kits {

/// Has views answer for themselves from now on where the toolkit is asked about them. It is called
/// once, in the window thread.
void DescribeViews();

} // namespace kits
