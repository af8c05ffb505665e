// SPDX-License-Identifier: GPL-3.0-or-later
// A bitmap as the source of a translation.
#pragma once

#include "kits/support/Bitmap.h"

#include <memory>

/// Owns the bitmap until it is detached. Window thread.
class BBitmapStream {
  public:
    explicit BBitmapStream(BBitmap* bitmap) : bitmap(bitmap) {}

    /// Returns the bitmap, or null once it has been detached.
    const BBitmap* Bitmap() const { return bitmap.get(); }
    /// Passes the bitmap to the caller, who then owns it. Returns B_NO_INIT if there is none.
    status_t DetachBitmap(BBitmap** result) {
        *result = bitmap.release();
        return *result ? B_OK : B_NO_INIT;
    }

  private:
    std::unique_ptr<BBitmap> bitmap;
};
