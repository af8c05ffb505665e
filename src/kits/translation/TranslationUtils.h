// SPDX-License-Identifier: GPL-3.0-or-later
// Loads the program's own images.
#pragma once

#include "kits/support/Bitmap.h"

class BTranslationUtils {
  public:
    /// Loads the image file with that name beside the program, in any readable format. Returns null
    /// if there is none. A file "NAME@2x.EXT" beside it becomes the bitmap's Dense(). The caller
    /// owns the bitmap. Window thread.
    static BBitmap* GetBitmap(const char* name);
};
