// SPDX-License-Identifier: GPL-3.0-or-later
// The session in which the program was started.
#pragma once

#include "app/Project.h"
#include "app/Session.h"
#include "kits/support/Result.h"

#include <memory>
#include <optional>

namespace vexa {

/// A session that the program has joined, and its project. The project of a new session has only
/// the options of the command line.
struct JoinedSession {
    std::unique_ptr<Session> session;
    Project project;
};

/// Joins the session of the manager that NSM_URL names, and makes the program's name in the session
/// its name for audio and MIDI systems. `options` are those of the command line. Returns nothing if
/// NSM_URL is not set, or if the manager cannot be reached or refuses the program, which is
/// reported on standard error. Fails if the project cannot be read, and tells the manager so. Waits
/// for the manager. Must be called before anything plays.
kits::Result<std::optional<JoinedSession>> JoinSession(const AppOptions& options);

} // namespace vexa
