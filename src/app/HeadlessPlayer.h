// SPDX-License-Identifier: GPL-3.0-or-later
// vexa --no-window: plays what MIDI brings until it is told to end.
#pragma once

#include "app/AppOptions.h"
#include "app/JoinedSession.h"
#include "kits/application/Interrupt.h"
#include "kits/media/Recording.h"
#include "kits/storage/ProgramFolder.h"

namespace vexa {

/// Sets up the sound and the audio graph, runs until the interrupt is requested, and says on
/// standard output how it went; faults go to standard error. Returns the program's exit code: 0, or
/// 1 when a sound that was asked for cannot be played. The recording, or null, is left to the
/// caller to finish. Where there is a session, or null, the options are its project's. The calling
/// thread is the window thread.
int PlayWithoutWindow(const AppOptions& options, const kits::ProgramFolders& folders,
                      const Tuning& tuning, const kits::Interrupt& interrupt,
                      kits::Recording* recording, JoinedSession* joined);

/// Prints the audio devices and MIDI sources; the exit code.
int ListDevices();

} // namespace vexa
