// SPDX-License-Identifier: GPL-3.0-or-later
// This is the program with its window.
#pragma once

#include "app/AppOptions.h"
#include "app/JoinedSession.h"
#include "kits/interface/Application.h"
#include "kits/media/Recording.h"
#include "kits/storage/ProgramFolder.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vexa {

class Attachment;
class VexaWindow;

/// The application has the main window. Window thread.
class VexaApplication : public BApplication {
  public:
    /// The window is to be told to begin.
    VexaApplication(const AppOptions& options, const kits::ProgramFolders& folders);
    /// Shows what plays in a plug-in, in a window of its own or inside another one.
    VexaApplication(const kits::ProgramFolders& folders, Attachment& plugin,
                    std::optional<uint32> into);

    void MessageReceived(BMessage* message) override;

    VexaWindow& Window() { return *window; }

  private:
    /// Deletes itself when it is closed.
    VexaWindow* window = nullptr;
};

/// An alert with why the program cannot begin, where there is a display; waits for the answer.
void ShowFault(const std::string& text);

/// Runs the window until it is closed, a signal is noted, or the plug-in goes that it is attached
/// to, and returns the program's exit code. It is 1, with a message, where there is no display or
/// no plug-in. `recording`, which may be null, is left to the caller to finish. Where there is a
/// session, the options are its project's.
int RunWindow(const AppOptions& options, const kits::ProgramFolders& folders,
              kits::Recording* recording, JoinedSession* joined);

} // namespace vexa
