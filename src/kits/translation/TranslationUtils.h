// SPDX-License-Identifier: GPL-3.0-or-later
// This loads images of the program.
#pragma once

#include "kits/support/Bitmap.h"

class BTranslationUtils {
  public:
    /// Returns the image file of that name beside the program, in any format that can be read; null
    /// where there is none. "NAME@2x.EXT" beside it becomes its Dense(). The caller owns the
    /// bitmap. Window thread.
    static BBitmap* GetBitmap(const char* name);
};
