// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/kernel/OS.h"

#include <chrono>

bigtime_t system_time() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count();
}
