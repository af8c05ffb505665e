// SPDX-License-Identifier: GPL-3.0-or-later
// The last line of defence of a program: what no other place has dealt with ends it with a message.
#pragma once

#include <functional>

namespace kits {

/// Runs the program's work and returns its exit code. An exception, such as that there is no memory
/// or no thread to be had, becomes a line on standard error that begins with `program`, and the
/// exit code 1; files that were being replaced stay as they were. Where memory runs out in another
/// thread, or in a library that lets no exception through, the end is the same. Signals that the
/// program's work depends on have their effect whatever it was started with. The main thread calls
/// it.
int GuardedMain(const char* program, const std::function<int()>& work);

} // namespace kits
