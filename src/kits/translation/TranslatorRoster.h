// SPDX-License-Identifier: GPL-3.0-or-later
// The translators: each writes pictures in one file format.
#pragma once

#include "kits/support/Geometry.h"
#include "kits/translation/TranslationDefs.h"

#include <string>
#include <vector>

class BBitmapStream;
class BDataIO;
class BMessage;
class BView;

/// Knows the formats that can be written on this system. Settings of the translators are kept as
/// long as the program runs. Window thread.
class BTranslatorRoster {
  public:
    static BTranslatorRoster* Default();

    /// Lists the translators in a fixed order, the most useful one first. The caller owns the list
    /// and frees it with delete[].
    status_t GetAllTranslators(translator_id** list, int32* count) const;
    /// The formats stay the roster's: first the neutral one, then that of the files.
    status_t GetOutputFormats(translator_id translator, const translation_format** formats,
                              int32* count) const;

    /// Returns what the names of the translator's files end with, such as ".png"; empty if there is
    /// nothing.
    std::string FileEnding(translator_id translator) const;

    /// A view that shows the translator's settings and changes them. The view is the caller's;
    /// `extent` becomes its bounds. `extension` is for compatibility. B_NO_CONFIGURATION for a
    /// translator without settings.
    status_t MakeConfigurationView(translator_id translator, BMessage* extension, BView** view,
                                   BRect* extent);

    /// Writes the bitmap, which stays the stream's, as a whole file of that type. B_BAD_TYPE for a
    /// bitmap that has no colours of its own, B_ERROR if the format cannot hold the picture, or
    /// what the destination says.
    status_t Translate(translator_id translator, BBitmapStream* source, const BMessage* extension,
                       BDataIO* destination, uint32 type) const;

  private:
    BTranslatorRoster();

    /// The rows of the table of formats that this system can write.
    std::vector<translator_id> translators;
};
