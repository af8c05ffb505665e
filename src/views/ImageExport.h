// SPDX-License-Identifier: GPL-3.0-or-later
// This writes a picture to a file, with any translator.
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

/// An R2RFVTranslatorSavePanel asks for this.
struct ImageRequest {
    entry_ref directory;
    std::string name;
    translator_id translator;
    /// A type of the translator's output formats.
    uint32 format;
    /// The picture has one more pixel in each direction.
    int32 size;
};

/// Reads the message of the panel; nothing where it lacks a field.
std::optional<ImageRequest> ReadImageRequest(const BMessage& message);

/// Has the picture made, and writes it. Where that cannot be done an alert says so, nothing is left
/// of the file, and one that was there before is as it was. `makeBitmap` is called with the size
/// once the file can be written, and only for sizes from 0 to 32767; its answer may be null or
/// not valid. Window thread.
void ExportImage(const ImageRequest& request,
                 const std::function<std::unique_ptr<BBitmap>(int32 size)>& makeBitmap);

} // namespace vexa
