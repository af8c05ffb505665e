// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/R2RFVTranslatorSavePanel.h"

#include "kits/interface/Control.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace vexa {

namespace {

constexpr uint32 kSizeChanged = FourCC("SZTC");

/// Returns the number in the text, clamped to the range of int32; such an extreme size is refused
/// when the file is written.
int32 Integer(const char* text) {
    using Limits = std::numeric_limits<int32>;
    return static_cast<int32>(
        std::clamp<long>(std::strtol(text, nullptr, 10), Limits::min(), Limits::max()));
}

} // namespace

R2RFVTranslatorSavePanel::R2RFVTranslatorSavePanel(const char* name, BMessenger* target,
                                                   entry_ref* directory, uint32 nodeFlavors,
                                                   bool multipleSelection, BMessage* message,
                                                   BRefFilter* filter, bool modal,
                                                   bool hideWhenDone)
    : TranslatorSavePanel(name, target, directory, nodeFlavors, multipleSelection, message, filter,
                          modal, hideWhenDone) {
    BWindow* window = Window();
    window->Lock();
    if (const BView* text = Background()->FindView("text view")) {
        const BRect place = text->Frame();
        const float left = place.right + 10;
        sizeControl = new BTextControl({left, place.top, left + 100, place.bottom}, "Size", "Size",
                                       "300", new BMessage(kSizeChanged),
                                       B_FOLLOW_LEFT | B_FOLLOW_BOTTOM, B_WILL_DRAW | B_NAVIGABLE);
        Background()->AddChild(sizeControl);
        sizeControl->SetTarget(this);
        UpdateMessage();
    }
    window->Unlock();
}

void R2RFVTranslatorSavePanel::MessageReceived(BMessage* message) {
    if (message->what == kSizeChanged)
        UpdateMessage();
    else
        TranslatorSavePanel::MessageReceived(message);
}

void R2RFVTranslatorSavePanel::AddFields(BMessage& message) const {
    if (sizeControl)
        message.AddInt32("size", Integer(sizeControl->Text()));
}

} // namespace vexa
