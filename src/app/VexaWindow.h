// SPDX-License-Identifier: GPL-3.0-or-later
// The main window: the logo bar, the main view and the macros.
#pragma once

#include "app/Project.h"
#include "app/Session.h"
#include "app/Settings.h"
#include "kits/interface/Window.h"
#include "kits/media/Recording.h"
#include "kits/storage/ProgramFolder.h"
#include "tuning/Tuning.h"

#include <memory>

namespace vexa {

class Attachment;
class BitmapBarView;
class VexaView;

/// Can be made wider, not taller. Closing it ends the program. Window thread.
class VexaWindow : public BWindow, private SessionClient {
  public:
    /// The frame is that of the logo bar and the main view: the window is higher by the macros, and
    /// wider where a font needs it. Has the default sound, unless told to leave that
    /// to the caller, or that of the plug-in. Plug-in and settings as VexaView. Not shown yet.
    VexaWindow(BRect frame, const kits::ProgramFolders& folders, bool withDefaultSound = true,
               Attachment* plugin = nullptr,
               std::shared_ptr<Settings> settings = std::make_shared<Settings>());

    VexaView& MainView() { return *mainView; }

    /// Shows the window and has it do what the options ask for, with alerts where that fails.
    void Begin(const AppOptions& options, const Tuning& tuning, kits::Recording* recording);
    /// The same in a session, whose manager is told how it went. From then on closing the window
    /// hides it, and what it shows is saved where the manager wants it.
    void Begin(std::unique_ptr<Session> session, const Project& project, const Tuning& tuning,
               kits::Recording* recording);
    bool InSession() const { return session != nullptr; }

    void MessageReceived(BMessage* message) override;
    bool QuitRequested() override;

  private:
    kits::Result<void> SaveProject() override;
    bool ProjectHasChanged() override;
    bool WindowIsShown() override { return !IsHidden(); }
    void ShowWindow(bool shown) override;
    Project PresentProject();
    void FollowSession();

    /// A plug-in has the sound, whatever becomes of the window.
    const bool attached;
    BitmapBarView* logoBar = nullptr;
    /// Null while it is being built, which may take an alert.
    VexaView* mainView = nullptr;
    std::unique_ptr<Session> session;
    /// The project as it was opened or saved last, with what the window cannot change.
    Project savedProject;
};

} // namespace vexa
