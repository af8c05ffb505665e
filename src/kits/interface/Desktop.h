// SPDX-License-Identifier: GPL-3.0-or-later
// Requests of the program to the desktop.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace kits {

/// Has the desktop show the file with the program that it has chosen for such files (by xdg-open).
/// Returns at once; if there is no such program, `failed` is called later with the reason, a whole
/// sentence. The program inherits none of the caller's open files. Window thread.
void ShowFile(const std::filesystem::path& file,
              std::function<void(const std::string& reason)> failed);

} // namespace kits
