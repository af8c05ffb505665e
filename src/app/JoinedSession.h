// SPDX-License-Identifier: GPL-3.0-or-later
// The session that the program was started in.
#pragma once

#include "app/Project.h"
#include "app/Session.h"
#include "kits/support/Result.h"

#include <memory>
#include <optional>

namespace vexa {

/// A session that was joined, with what is kept there, or what the command line says where nothing
/// is kept yet.
struct JoinedSession {
    std::unique_ptr<Session> session;
    Project project;
};

/// Joins the session of the manager that NSM_URL names, by the options, and names the program to
/// audio and MIDI systems as the session has it. Nothing where there is none; a manager that does
/// not want the program is told of on standard error. Waits for the manager. Fails where what is
/// to be opened cannot be, of which the manager is told too. To be called before anything plays.
kits::Result<std::optional<JoinedSession>> JoinSession(const AppOptions& options);

} // namespace vexa
