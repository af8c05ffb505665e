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

/// Lists the translators whose formats this system can write. The translators' settings are kept as
/// long as the program runs. Window thread.
class BTranslatorRoster {
  public:
    static BTranslatorRoster* Default();

    /// Lists the translators in a fixed order, the most useful one first. The caller owns the list
    /// and frees it with delete[].
    status_t GetAllTranslators(translator_id** list, int32* count) const;
    /// Returns the formats of a translator: first the neutral one, then that of its files. They
    /// belong to the roster.
    status_t GetOutputFormats(translator_id translator, const translation_format** formats,
                              int32* count) const;

    /// Returns the ending of the translator's file names, such as ".png"; empty for an unknown
    /// translator.
    std::string FileEnding(translator_id translator) const;

    /// Creates a view that shows and changes the translator's settings. The caller owns the view;
    /// `extent` is set to its bounds. `extension` exists for compatibility and is ignored. Returns
    /// B_NO_CONFIGURATION for a translator without settings.
    status_t MakeConfigurationView(translator_id translator, BMessage* extension, BView** view,
                                   BRect* extent);

    /// Writes the bitmap, which the stream keeps, as a complete file of that type. Returns
    /// B_BAD_TYPE for a bitmap whose pixels are palette indices, B_ERROR if the format cannot hold
    /// the picture, or the error of the destination.
    status_t Translate(translator_id translator, BBitmapStream* source, const BMessage* extension,
                       BDataIO* destination, uint32 type) const;

  private:
    BTranslatorRoster();

    /// The ids of the translators whose formats this system can write.
    std::vector<translator_id> translators;
};
