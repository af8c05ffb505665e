// SPDX-License-Identifier: GPL-3.0-or-later
// The program with its window.
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
struct WindowChoices;

/// The application and its main window. Window thread.
class VexaApplication : public BApplication {
  public:
    /// Makes the window without showing it: the caller calls its Begin.
    VexaApplication(const AppOptions& options, const kits::ProgramFolders& folders);
    /// Makes and shows the window of a plug-in's sound, by itself or inside the X window `into`.
    VexaApplication(const kits::ProgramFolders& folders, Attachment& plugin,
                    std::optional<uint32> into);

    void MessageReceived(BMessage* message) override;

    VexaWindow& Window() { return *window; }

  private:
    VexaApplication(const kits::ProgramFolders& folders, const WindowChoices& choices);

    /// The window deletes itself when it is closed.
    VexaWindow* const window;
};

/// Shows an alert with the reason why the program cannot start, and waits for the answer. Does
/// nothing without a display.
void ShowFault(const std::string& text);

/// Runs the window until it is closed, a signal is noted, or the plug-in that it is attached to has
/// gone. Returns the program's exit code, which is 1, with a message, if there is no display or no
/// plug-in, or if the connection to the plug-in has a fault. `recording`, which may be null, is
/// closed by then; what is to be told of it is left to the caller. `joined` is null if there is no
/// session; otherwise the options are those of its project. `warning`, unless empty, is shown in an
/// alert at the start.
int RunWindow(const AppOptions& options, const kits::ProgramFolders& folders,
              const std::string& warning, kits::Recording* recording, JoinedSession* joined);

} // namespace vexa
