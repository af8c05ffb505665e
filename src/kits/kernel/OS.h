// SPDX-License-Identifier: GPL-3.0-or-later
// The system's clock.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

/// Returns the microseconds since some fixed moment before the program's start; the value never
/// decreases. Any thread, including the media thread.
VEXA_REALTIME bigtime_t system_time();
