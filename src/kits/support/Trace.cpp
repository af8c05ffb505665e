// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Trace.h"

#include <cstdlib>
#include <cstring>

namespace kits {

bool TraceIsOn() {
    static const bool on = [] {
        const char* value = std::getenv("VEXA_TRACE");
        return value && *value && std::strcmp(value, "0") != 0;
    }();
    return on;
}

} // namespace kits
