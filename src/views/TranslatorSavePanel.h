// SPDX-License-Identifier: GPL-3.0-or-later
// The file panel that saves pictures: a choice of formats and their settings.
#pragma once

#include "kits/application/Handler.h"
#include "kits/interface/FilePanel.h"
#include "kits/interface/Menu.h"
#include "kits/interface/Window.h"

namespace vexa {

class TranslatorMenuItem;

/// A save panel whose result also names the translator that must write the file and the format:
/// "translator_id" (raw, 4 bytes) and "translator_format" (int32). Both are missing if no format
/// can be written. As a handler the panel takes the messages of its own controls. Window thread.
class TranslatorSavePanel : public BFilePanel, public BHandler {
  public:
    /// `name` is the handler's name; the other arguments are those of BFilePanel.
    TranslatorSavePanel(const char* name, BMessenger* target, entry_ref* directory,
                        uint32 nodeFlavors, bool multipleSelection, BMessage* message,
                        BRefFilter* filter, bool modal, bool hideWhenDone);
    ~TranslatorSavePanel() override;

    void MessageReceived(BMessage* message) override;

    /// Returns the marked format, or null.
    TranslatorMenuItem* GetCurrentMenuItem() const;
    /// Returns the window that TranslatorSettings opened last, or null once it has been closed.
    BWindow* SettingsWindow() const;

  protected:
    /// Creates the menu of formats, with one for each translator that writes pictures, and marks
    /// the first.
    void BuildMenu();
    /// Shows the settings of the marked format's translator, or an alert with the reason if it has
    /// none.
    void TranslatorSettings();
    /// Builds the result from the present state of the controls.
    void UpdateMessage();
    /// Adds the fields of a derived panel's controls.
    virtual void AddFields(BMessage& /*message*/) const {}
    /// Returns the panel's view that contains all others.
    BView* Background() const { return Window()->ChildAt(0); }

  private:
    void UpdateName();
    bool AddControls();

    /// Valid as long as the settings window, which deletes itself, exists.
    BMessenger settingsWindow;
    BWindow* settings = nullptr;
    /// The menu, which `formatField` owns.
    BPopUpMenu* formatMenu = nullptr;
    BMenuField* formatField = nullptr;
    /// The message code of the result.
    uint32 saveWhat;
};

} // namespace vexa
