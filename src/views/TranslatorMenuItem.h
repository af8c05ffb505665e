// SPDX-License-Identifier: GPL-3.0-or-later
// An item in the menu of picture formats.
#pragma once

#include "kits/interface/Menu.h"
#include "kits/translation/TranslationDefs.h"

namespace vexa {

/// An item that stands for one format of one translator. Window thread.
class TranslatorMenuItem : public BMenuItem {
  public:
    TranslatorMenuItem(const char* label, BMessage* message, uint32 translatorId, uint32 outputType)
        : BMenuItem(label, message), translatorId(translatorId), outputType(outputType) {}

    /// The translator that writes the format.
    translator_id translatorId;
    /// The format's type code.
    uint32 outputType;
};

} // namespace vexa
