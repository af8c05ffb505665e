// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/Path.h"

#include <filesystem>

namespace fs = std::filesystem;

status_t BPath::SetTo(const char* newPath, const char* leaf) {
    fs::path joined = newPath ? newPath : "";
    if (joined.empty() || (leaf && *leaf == '/'))
        return B_BAD_VALUE;
    if (leaf)
        joined /= leaf;
    std::error_code error;
    joined = fs::absolute(joined, error).lexically_normal();
    if (error)
        return -error.value();
    // The normal form of "a/b/" has an empty file name after the last slash.
    if (!joined.has_filename() && joined.has_relative_path())
        joined = joined.parent_path();
    path = joined.string();
    return B_OK;
}

const char* BPath::Leaf() const {
    return path.c_str() + (path.find_last_of('/') + 1);
}

status_t BPath::GetParent(BPath* parent) const {
    if (path.empty())
        return B_NO_INIT;
    if (path == "/")
        return B_ENTRY_NOT_FOUND;
    return parent->SetTo(fs::path(path).parent_path().c_str());
}
