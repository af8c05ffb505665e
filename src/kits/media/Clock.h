// The system's clock, and waiting by it.
#pragma once

#include "kits/support/SupportDefs.h"

#include <semaphore.h>

namespace kits {

/// Microseconds of the clock that never jumps: the "real time" of the media kit. Any thread.
bigtime_t MonotonicTime() noexcept;

/// Waits until the semaphore is posted, which it then takes (true), or until the moment (false).
bool WaitUntil(sem_t& semaphore, bigtime_t moment) noexcept;

} // namespace kits
