// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/RealtimePriority.h"

#include <pthread.h>
#include <sched.h>

namespace kits {

bool TakeRealtimePriority(int priority) {
    sched_param parameters{};
    parameters.sched_priority = priority;
    return ::pthread_setschedparam(::pthread_self(), SCHED_FIFO, &parameters) == 0;
}

} // namespace kits
