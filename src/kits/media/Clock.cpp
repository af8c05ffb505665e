// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/Clock.h"

#include <cerrno>
#include <ctime>

namespace kits {

bool WaitUntil(sem_t& semaphore, bigtime_t moment) noexcept {
    timespec when{};
    when.tv_sec = moment / 1000000;
    when.tv_nsec = moment % 1000000 * 1000;
    while (::sem_clockwait(&semaphore, CLOCK_MONOTONIC, &when) != 0) {
        if (errno != EINTR)
            return false;
    }
    return true;
}

} // namespace kits
