// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/Entry.h"

#include <filesystem>

namespace fs = std::filesystem;

BEntry::BEntry(const entry_ref* ref, bool traverse) {
    SetTo(BPath(ref).Path(), traverse);
}

status_t BEntry::SetTo(const char* newPath, bool traverse) {
    path = BPath();
    const BPath absolute(newPath);
    if (absolute.InitCheck() != B_OK)
        return B_BAD_VALUE;
    std::error_code error;
    fs::path entry = absolute.Path();
    if (traverse && fs::is_symlink(entry, error))
        entry = fs::weakly_canonical(entry, error);
    const fs::path folder = fs::canonical(entry.parent_path(), error);
    if (error)
        return B_ENTRY_NOT_FOUND;
    return path.SetTo((folder / entry.filename()).c_str());
}

status_t BEntry::GetPath(BPath* result) const {
    *result = path;
    return InitCheck();
}

status_t BEntry::GetRef(entry_ref* ref) const {
    BPath folder;
    if (const status_t status = path.GetParent(&folder); status != B_OK)
        return status;
    *ref = {folder.Path(), path.Leaf()};
    return B_OK;
}

status_t BEntry::GetParent(BEntry* parent) const {
    BPath folder;
    if (const status_t status = path.GetParent(&folder); status != B_OK)
        return status;
    return parent->SetTo(folder.Path());
}

status_t get_ref_for_path(const char* path, entry_ref* ref) {
    const BPath whole(path);
    if (whole.InitCheck() != B_OK)
        return B_BAD_VALUE;
    BPath folder = whole;
    // The root folder is its own parent.
    whole.GetParent(&folder);
    *ref = {folder.Path(), whole.Leaf()};
    return B_OK;
}
