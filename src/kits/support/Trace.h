// SPDX-License-Identifier: GPL-3.0-or-later
// Lines for whoever wants to know what the program is doing.
#pragma once

#include <cstdio>

namespace kits {

/// Whether trace lines are written: the environment variable VEXA_TRACE is set, and not to 0.
bool TraceIsOn();

} // namespace kits

/// As fprintf, but writes only when the trace is on. Not for real-time threads,
/// whose lines are kept by TraceLater.
#define FPRINTF(...)                                                                               \
    do {                                                                                           \
        if (kits::TraceIsOn())                                                                     \
            std::fprintf(__VA_ARGS__);                                                             \
    } while (false)
