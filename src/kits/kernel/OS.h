// SPDX-License-Identifier: GPL-3.0-or-later
// The system's clock.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

/// Returns the microseconds since some moment before the program's start; the number never goes
/// back. Any thread, the media thread included.
VEXA_REALTIME bigtime_t system_time();
