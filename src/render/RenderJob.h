// SPDX-License-Identifier: GPL-3.0-or-later
// A job is one run of vexa-render, from the parsed command line to the finished file.
#pragma once

#include "kits/storage/ProgramFolder.h"
#include "kits/support/Result.h"
#include "render/Options.h"
#include "render/Progress.h"

#include <string>
#include <vector>

namespace vexa {

/// The outcome tells how a run ended.
struct RenderOutcome {
    /// The exit code: 0, 1 for a failure, 2 for options that do not fit the sound, 128 and more for
    /// a signal.
    int exitCode = 0;
    /// The reason, if it failed.
    std::string fault;
    RenderSummary summary;
    /// Sentences on what is not as it should be although the file was written.
    std::vector<std::string> warnings;
};

/// Does what the options ask for with what `folders` have. On any failure, and on SIGINT, SIGTERM
/// or SIGHUP, the output is as it was and nothing is left beside it. One thread, which does the
/// work of the window, the MIDI and the media thread.
RenderOutcome RunRender(const Options& options, const kits::ProgramFolders& folders);

} // namespace vexa
