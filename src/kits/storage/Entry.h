// SPDX-License-Identifier: GPL-3.0-or-later
// A place in the file system where something may be.
#pragma once

#include "kits/storage/Path.h"
#include "kits/support/EntryRef.h"
#include "kits/support/SupportDefs.h"

/// An entry of a folder that exists; the entry itself need not. Any thread.
class BEntry {
  public:
    BEntry() = default;
    explicit BEntry(const char* path, bool traverse = false) { SetTo(path, traverse); }
    explicit BEntry(const entry_ref* ref, bool traverse = false);

    /// Follows links in the path to the folder, so that each entry has one path; follows a link
    /// that is itself the entry only with `traverse`. Returns B_ENTRY_NOT_FOUND if there is no such
    /// folder.
    status_t SetTo(const char* path, bool traverse = false);
    status_t InitCheck() const { return path.InitCheck(); }

    status_t GetPath(BPath* result) const;
    status_t GetRef(entry_ref* ref) const;
    status_t GetParent(BEntry* parent) const;

  private:
    BPath path;
};

/// Makes the ref of the entry at an absolute path, which need not exist; does not follow links.
/// Returns B_BAD_VALUE for an empty path.
status_t get_ref_for_path(const char* path, entry_ref* ref);
