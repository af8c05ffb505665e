// SPDX-License-Identifier: GPL-3.0-or-later
// A host's log for what its plug-ins have to say. This stands in for CLAP's header clap/ext/log.h,
// which the package of the other headers leaves out.
#pragma once

#include <clap/host.h>

namespace vexa::clap {

constexpr const char* kHostLogId = "clap.log";

/// The severity of what is not as the user wants it while the plug-in goes on.
constexpr int32_t kLogError = 3;

struct HostLog {
    /// Any thread.
    void(CLAP_ABI* log)(const clap_host* host, int32_t severity, const char* message);
};

} // namespace vexa::clap
