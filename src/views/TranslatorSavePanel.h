// SPDX-License-Identifier: GPL-3.0-or-later
// The file panel that saves pictures: a choice of formats and their settings.
#pragma once

#include "kits/application/Handler.h"
#include "kits/interface/FilePanel.h"
#include "kits/interface/Menu.h"
#include "kits/interface/Window.h"

namespace vexa {

class TranslatorMenuItem;

/// A save panel whose result also says which translator is to write the file, and in which format:
/// "translator_id" (raw, 4 bytes) and "translator_format" (int32), missing where no format can be
/// written. As a handler it takes the messages of its own controls. Window thread.
class TranslatorSavePanel : public BFilePanel, public BHandler {
  public:
    /// The name is the handler's; all else is as in BFilePanel.
    TranslatorSavePanel(const char* name, BMessenger* target, entry_ref* directory,
                        uint32 nodeFlavors, bool multipleSelection, BMessage* message,
                        BRefFilter* filter, bool modal, bool hideWhenDone);
    ~TranslatorSavePanel() override;

    void MessageReceived(BMessage* message) override;

    /// The marked item, null if there is none.
    TranslatorMenuItem* GetCurrentMenuItem() const;
    /// The window of the last call of TranslatorSettings, null once it has been closed.
    BWindow* SettingsWindow() const;

  protected:
    /// Creates the menu of formats, one for each translator that writes pictures, and marks the
    /// first.
    void BuildMenu();
    /// Shows what the marked format's translator can be told, or why there is nothing to show.
    void TranslatorSettings();
    /// Makes the result what the controls say now.
    void UpdateMessage();
    /// Adds what the controls of a derived panel say.
    virtual void AddFields(BMessage& /*message*/) const {}
    /// The view of the panel that all others are in.
    BView* Background() const { return Window()->ChildAt(0); }

  private:
    void UpdateName();
    bool AddControls();

    /// Tells whether the settings window, which deletes itself, is still there.
    BMessenger settingsWindow;
    BWindow* settings = nullptr;
    /// The menu, which belongs to the field.
    BPopUpMenu* formatMenu = nullptr;
    BMenuField* formatField = nullptr;
    /// The code of the result.
    uint32 saveWhat;
};

} // namespace vexa
