// SPDX-License-Identifier: GPL-3.0-or-later
// Lines for whoever wants to know what the program is doing.
#pragma once

#include <cstdio>

namespace kits {

/// Returns true if trace lines are written: the environment variable VEXA_TRACE is set, and not to
/// 0.
bool TraceIsOn();

} // namespace kits

/// Writes as fprintf does, but only when the trace is on. Real-time threads must not use it;
/// TraceLater keeps their lines.
#define FPRINTF(...)                                                                               \
    do {                                                                                           \
        if (kits::TraceIsOn())                                                                     \
            std::fprintf(__VA_ARGS__);                                                             \
    } while (false)
