// SPDX-License-Identifier: GPL-3.0-or-later
// The processor time of a thread, which does not depend on what else the machine does.
#pragma once

#include <chrono>

#include <time.h>

namespace kits {

/// Returns the processor time that the calling thread has used.
inline std::chrono::nanoseconds ThreadTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace kits
