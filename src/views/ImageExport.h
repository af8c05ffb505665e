// SPDX-License-Identifier: GPL-3.0-or-later
// Writes a picture to a file in the format of a translator.
#pragma once

#include "kits/support/Bitmap.h"
#include "kits/support/EntryRef.h"
#include "kits/support/Message.h"
#include "kits/translation/TranslationDefs.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vexa {

/// The contents of an R2RFVTranslatorSavePanel's result.
struct ImageRequest {
    entry_ref directory;
    std::string name;
    translator_id translator;
    /// The type of one of the translator's output formats.
    uint32 format;
    /// The picture's edge as BRect counts it: the picture has one pixel more in each direction.
    int32 size;
};

/// Reads the panel's message. Returns nothing if a field is missing.
std::optional<ImageRequest> ReadImageRequest(const BMessage& message);

/// Creates the picture with `makeBitmap` and writes it. On failure an alert reports the reason, and
/// no partial file remains: an existing file stays unchanged. `makeBitmap` is called with the size
/// once the file has been opened for writing, and only for sizes from 0 to 32767. It may return
/// null or an invalid bitmap. Window thread.
void ExportImage(const ImageRequest& request,
                 const std::function<std::unique_ptr<BBitmap>(int32 size)>& makeBitmap);

} // namespace vexa
