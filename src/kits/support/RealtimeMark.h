// SPDX-License-Identifier: GPL-3.0-or-later
// The mark of what the media and device threads and a plug-in's run() may call.
#pragma once

/// Marks a function, or with a class all functions of that but constructors and destructors, as one
/// that a thread may call that has to be done in time: it does not allocate, lock, wait or make a
/// system call besides the clock's and those that wake another thread. It stands before the
/// declaration, or after `class`. scripts/check-realtime.py reads it and finds calls of what is not
/// marked; to compilers it means nothing.
#if defined(__clang__)
#define VEXA_REALTIME [[clang::annotate("realtime")]]
#else
#define VEXA_REALTIME
#endif
