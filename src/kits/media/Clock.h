// SPDX-License-Identifier: GPL-3.0-or-later
// Waiting by the system's clock.
#pragma once

#include "kits/support/SupportDefs.h"

#include <semaphore.h>

namespace kits {

/// Waits until the semaphore is posted or until `moment` of system_time(). Returns true, with the
/// semaphore taken, in the first case and false in the second. Any thread.
bool WaitUntil(sem_t& semaphore, bigtime_t moment) noexcept;

} // namespace kits
