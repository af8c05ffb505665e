// SPDX-License-Identifier: GPL-3.0-or-later
// The toolkit's side of what a view tells those who cannot see it.
#pragma once

namespace kits {

/// From now on views answer for themselves where the toolkit is asked about them. Once, window
/// thread.
void DescribeViews();

} // namespace kits
