// SPDX-License-Identifier: GPL-3.0-or-later
// vexa --no-window: plays MIDI events until the program is asked to end.
#pragma once

#include "app/AppOptions.h"
#include "app/JoinedSession.h"
#include "kits/application/Interrupt.h"
#include "kits/media/Recording.h"
#include "kits/storage/ProgramFolder.h"

namespace vexa {

/// Sets up the sound and the audio graph, runs until the interrupt is requested, and reports on
/// standard output how it went; faults go to standard error. Returns the program's exit code: 0, or
/// 1 if a sound that was asked for cannot be played. `recording`, which may be null, is closed by
/// then; what is to be told of it is left to the caller. `joined` is null if there is no session;
/// otherwise the options are those of its project. The calling thread is the window thread.
int PlayWithoutWindow(const AppOptions& options, const kits::ProgramFolders& folders,
                      const Tuning& tuning, const kits::Interrupt& interrupt,
                      kits::Recording* recording, JoinedSession* joined);

/// Prints the audio devices and MIDI sources. Returns the exit code, which is 1 if there is no MIDI
/// roster.
int ListDevices();

} // namespace vexa
