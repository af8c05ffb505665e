// SPDX-License-Identifier: GPL-3.0-or-later
// The name of an entry in the file system, as messages carry it.
#pragma once

#include <string>

/// Names an entry of a folder in messages and to other kits.
struct entry_ref {
    /// The absolute path of the folder that the entry is in.
    std::string directory;
    /// The entry's name in that folder; it is empty where the entry is the root folder.
    std::string name;

    bool operator==(const entry_ref&) const = default;
};
