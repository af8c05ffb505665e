// SPDX-License-Identifier: GPL-3.0-or-later
// This waits by the system's clock.
#pragma once

#include "kits/support/SupportDefs.h"

#include <semaphore.h>

namespace kits {

/// Waits until the semaphore is posted, which it then takes (true), or until the moment of
/// system_time() (false). Any thread.
bool WaitUntil(sem_t& semaphore, bigtime_t moment) noexcept;

} // namespace kits
