// SPDX-License-Identifier: GPL-3.0-or-later
// Names for what a path leads to if it is not a regular file.
#pragma once

#include <sys/stat.h>

namespace kits {

/// Returns "it is a folder, not a file" or the like, for a mode of stat(2) that is not a regular
/// file's.
inline const char* WhatItIs(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFDIR:
        return "it is a folder, not a file";
    case S_IFIFO:
        return "it is a pipe, not a file";
    case S_IFSOCK:
        return "it is a socket, not a file";
    default:
        return "it is a device, not a file";
    }
}

} // namespace kits
