// SPDX-License-Identifier: GPL-3.0-or-later
// The priority of threads that must not be late.
#pragma once

namespace kits {

/// Gives the calling thread the real-time priority `priority` (1..99; SCHED_FIFO) if the system
/// grants it; returns false if it does not.
bool TakeRealtimePriority(int priority);

} // namespace kits
