// SPDX-License-Identifier: GPL-3.0-or-later
// The last line of defence of a program: faults that nothing else has handled end it with a
// message.
#pragma once

#include <functional>

namespace kits {

/// Runs the program's work and returns its exit code. An exception, such as for lack of memory or
/// of a thread, becomes a line on standard error that begins with `program`, and the exit code 1;
/// files that were being replaced stay as they were. Text that standard output does not take is
/// told in the same way. A fault in another thread, or in a library that lets no exception through,
/// ends the program after such a line, too, by SIGABRT unless memory has run out. Signals on which
/// the program's work depends get the needed action, whatever the program was started with. The
/// main thread calls it.
int GuardedMain(const char* program, const std::function<int()>& work);

} // namespace kits
