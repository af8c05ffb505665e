// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Bitmap.h"

#include <new>

BBitmap::BBitmap(BRect bounds, color_space space) : bounds(bounds), space(space) {
    const int64 columns = int64(bounds.IntegerWidth()) + 1;
    const int64 rows = int64(bounds.IntegerHeight()) + 1;
    const int64 bytes = (columns * (space == B_CMAP8 ? 1 : 4) + 3) / 4 * 4;
    if (columns < 1 || rows < 1 || bytes > INT32_MAX)
        return;
    try {
        bits.resize(static_cast<std::size_t>(bytes * rows));
        bytesPerRow = static_cast<int32>(bytes);
    } catch (const std::bad_alloc&) {
        // The bitmap stays invalid: the bounds are too large for this machine.
    }
}
