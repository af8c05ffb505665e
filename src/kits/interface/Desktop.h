// SPDX-License-Identifier: GPL-3.0-or-later
// This is what the program asks of the desktop.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace kits {

/// Has the desktop show the file, with whichever program it has for that (xdg-open). Returns at
/// once; where there is none, `failed` is called later with the reason. That program gets none of
/// the caller's open files. Window thread.
void ShowFile(const std::filesystem::path& file,
              std::function<void(const std::string& reason)> failed);

} // namespace kits
