// SPDX-License-Identifier: GPL-3.0-or-later
// The file panel that saves pictures of the plane, of any size.
#pragma once

#include "views/TranslatorSavePanel.h"

class BTextControl;

namespace vexa {

/// A save panel whose result also has "size" (int32): the edge of the picture as BRect counts it,
/// one less than its pixels. It is the last confirmed number in the size field, or 0 if the text is
/// not a number. Window thread.
class R2RFVTranslatorSavePanel : public TranslatorSavePanel {
  public:
    R2RFVTranslatorSavePanel(const char* name, BMessenger* target, entry_ref* directory,
                             uint32 nodeFlavors, bool multipleSelection, BMessage* message,
                             BRefFilter* filter, bool modal, bool hideWhenDone);

    void MessageReceived(BMessage* message) override;

  protected:
    void AddFields(BMessage& message) const override;

  private:
    BTextControl* sizeControl = nullptr;
};

} // namespace vexa
