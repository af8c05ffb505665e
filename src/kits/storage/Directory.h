// SPDX-License-Identifier: GPL-3.0-or-later
// A folder in which files are made.
#pragma once

#include "kits/storage/Entry.h"

/// A folder that exists. Any thread.
class BDirectory {
  public:
    explicit BDirectory(const char* path) { SetTo(path); }
    explicit BDirectory(const entry_ref* ref) { SetTo(BPath(ref).Path()); }

    /// Returns B_ENTRY_NOT_FOUND if nothing exists there, B_BAD_TYPE if it is not a folder.
    status_t SetTo(const char* path);
    status_t InitCheck() const { return status; }

    /// Returns the folder's absolute path.
    const BPath& Path() const { return path; }

  private:
    BPath path;
    status_t status = B_NO_INIT;
};
