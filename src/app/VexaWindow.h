// The main window: the logo bar and the main view.
#pragma once

#include "kits/interface/Window.h"
#include "kits/storage/ProgramFolder.h"

namespace vexa {

class BitmapBarView;
class VexaView;

/// Can be made wider, not taller. Closing it ends the program. Window thread.
class VexaWindow : public BWindow {
  public:
    /// Wider than the frame where a font needs it. Has the default sound, unless told to leave that
    /// to the caller. Not shown yet.
    VexaWindow(BRect frame, const kits::ProgramFolders& folders, bool withDefaultSound = true);

    VexaView& MainView() { return *mainView; }

    void MessageReceived(BMessage* message) override;
    bool QuitRequested() override;

  private:
    BitmapBarView* logoBar = nullptr;
    /// Null while it is being built, which may take an alert.
    VexaView* mainView = nullptr;
};

} // namespace vexa
