// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/Path.h"

#include <filesystem>
#include <utility>

namespace fs = std::filesystem;

namespace {

/// Resolves the path up to its last "..": behind a symbolic link, the parent is that of the folder
/// to which the link leads. What does not exist is taken as it reads.
fs::path WithoutParents(const fs::path& path) {
    fs::path resolved;
    for (const fs::path& name : path) {
        resolved /= name;
        std::error_code error;
        if (name != "..")
            continue;
        if (fs::path parent = fs::weakly_canonical(resolved, error); !error)
            resolved = std::move(parent);
    }
    return resolved.lexically_normal();
}

} // namespace

status_t BPath::SetTo(const char* newPath, const char* leaf) {
    fs::path joined = newPath ? newPath : "";
    if (joined.empty() || (leaf && *leaf == '/'))
        return B_BAD_VALUE;
    if (leaf)
        joined /= leaf;
    std::error_code error;
    joined = WithoutParents(fs::absolute(joined, error));
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
