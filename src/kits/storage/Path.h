// SPDX-License-Identifier: GPL-3.0-or-later
// A path in the file system.
#pragma once

#include "kits/support/EntryRef.h"
#include "kits/support/SupportDefs.h"

#include <string>

/// An absolute path without ".", "..", double or trailing slashes; empty until it is set. A
/// relative path is resolved against the current folder, and ".." as the system does, through
/// symbolic links. The path need not exist. Any thread.
class BPath {
  public:
    BPath() = default;
    explicit BPath(const char* path, const char* leaf = nullptr) { SetTo(path, leaf); }
    explicit BPath(const entry_ref* ref) { SetTo(ref->directory.c_str(), ref->name.c_str()); }

    /// Sets the path, with `leaf`, a relative path, appended. Returns B_BAD_VALUE for an empty path
    /// or an absolute leaf.
    status_t SetTo(const char* path, const char* leaf = nullptr);
    status_t Append(const char* leaf) { return SetTo(Path(), leaf); }
    /// Returns B_NO_INIT until a path is set.
    status_t InitCheck() const { return path.empty() ? B_NO_INIT : B_OK; }

    const char* Path() const { return path.c_str(); }
    /// Returns the last component; empty for the root.
    const char* Leaf() const;
    /// Sets `parent` to the folder that contains the path's entry. Returns B_ENTRY_NOT_FOUND for
    /// the root.
    status_t GetParent(BPath* parent) const;

    bool operator==(const BPath&) const = default;

  private:
    std::string path;
};
