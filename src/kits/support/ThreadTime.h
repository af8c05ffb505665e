// SPDX-License-Identifier: GPL-3.0-or-later
// The time that a thread has computed, whatever else the machine does meanwhile.
#pragma once

#include <chrono>

#include <time.h>

namespace kits {

/// Returns the processor time that the calling thread has had.
inline std::chrono::nanoseconds ThreadTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace kits
