// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/Directory.h"

#include <filesystem>

status_t BDirectory::SetTo(const char* next) {
    path = BPath(next);
    std::error_code error;
    const std::filesystem::file_status found = std::filesystem::status(path.Path(), error);
    if (found.type() == std::filesystem::file_type::not_found)
        return status = B_ENTRY_NOT_FOUND;
    if (error)
        return status = -error.value();
    return status = std::filesystem::is_directory(found) ? B_OK : B_BAD_TYPE;
}
