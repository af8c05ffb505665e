// SPDX-License-Identifier: GPL-3.0-or-later
// The mark of functions that the media and device threads and a plug-in's run() may call.
#pragma once

/// Marks a function, or with a class all its functions except constructors and destructors, as fit
/// for a thread with deadlines: it does not allocate, lock, wait or make a system call other than
/// the clock's and those that wake another thread. The mark stands before the declaration, or after
/// `class`. scripts/check-realtime.py reads it and finds calls of unmarked functions; compilers
/// ignore it.
#if defined(__clang__)
#define VEXA_REALTIME [[clang::annotate("realtime")]]
#else
#define VEXA_REALTIME
#endif
