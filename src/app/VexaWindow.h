// SPDX-License-Identifier: GPL-3.0-or-later
// The main window: the logo bar, the main view and the macros.
#pragma once

#include "app/Settings.h"
#include "kits/interface/Window.h"
#include "kits/storage/ProgramFolder.h"

#include <memory>

namespace vexa {

class Attachment;
class BitmapBarView;
class VexaView;

/// Can be made wider, not taller. Closing it ends the program. Window thread.
class VexaWindow : public BWindow {
  public:
    /// The frame is that of the logo bar and the main view: the window is higher by the macros, and
    /// wider where a font needs it. Has the default sound, unless told to leave that
    /// to the caller, or that of the plug-in. Plug-in and settings as VexaView. Not shown yet.
    VexaWindow(BRect frame, const kits::ProgramFolders& folders, bool withDefaultSound = true,
               Attachment* plugin = nullptr,
               std::shared_ptr<Settings> settings = std::make_shared<Settings>());

    VexaView& MainView() { return *mainView; }

    void MessageReceived(BMessage* message) override;
    bool QuitRequested() override;

  private:
    /// A plug-in has the sound, whatever becomes of the window.
    const bool attached;
    BitmapBarView* logoBar = nullptr;
    /// Null while it is being built, which may take an alert.
    VexaView* mainView = nullptr;
};

} // namespace vexa
