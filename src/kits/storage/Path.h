// SPDX-License-Identifier: GPL-3.0-or-later
// The name of a place in the file system.
#pragma once

#include "kits/support/EntryRef.h"
#include "kits/support/SupportDefs.h"

#include <string>

/// An absolute path without "." and "..", doubled or trailing slashes; empty until it is set. A
/// relative path is taken from the current folder. Nothing need exist there. Any thread.
class BPath {
  public:
    BPath() = default;
    explicit BPath(const char* path, const char* leaf = nullptr) { SetTo(path, leaf); }
    explicit BPath(const entry_ref* ref) { SetTo(ref->directory.c_str(), ref->name.c_str()); }

    /// Sets the path, with `leaf`, a relative path, appended. Returns B_BAD_VALUE for an empty path
    /// or an absolute leaf.
    status_t SetTo(const char* path, const char* leaf = nullptr);
    status_t Append(const char* leaf) { return SetTo(Path(), leaf); }
    /// B_NO_INIT until a path is set.
    status_t InitCheck() const { return path.empty() ? B_NO_INIT : B_OK; }

    const char* Path() const { return path.c_str(); }
    /// The last component; empty for the root.
    const char* Leaf() const;
    /// Finds the folder that the path's entry is in. Returns B_ENTRY_NOT_FOUND for the root.
    status_t GetParent(BPath* parent) const;

    bool operator==(const BPath&) const = default;

  private:
    std::string path;
};
