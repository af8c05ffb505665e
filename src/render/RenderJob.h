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

/// The outcome of a run.
struct RenderOutcome {
    /// The exit code: 0 for success, 1 for a failure, 2 for options that do not fit the sound, 128
    /// plus its number for a signal.
    int exitCode = 0;
    /// The reason of a failure.
    std::string fault;
    RenderSummary summary;
    /// Sentences about problems that did not prevent the file from being written.
    std::vector<std::string> warnings;
};

/// Renders as the options say, with the content of `folders`. After any failure, and on SIGINT,
/// SIGTERM or SIGHUP, the output file is unchanged and no temporary file is left beside it. The
/// calling thread acts as the window, the MIDI and the media thread.
RenderOutcome RunRender(const Options& options, const kits::ProgramFolders& folders);

} // namespace vexa
