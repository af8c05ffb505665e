// SPDX-License-Identifier: GPL-3.0-or-later
// The folders in which programs keep a user's files, by XDG Base Directory, version 0.8.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>

namespace kits {

/// Returns the folder of a user's data: $XDG_DATA_HOME, else ~/.local/share. The home folder is
/// $HOME, else that of the user database. The error names the variables that are not set. Any
/// thread.
Result<std::filesystem::path> UserDataFolder();
/// Returns the folder of a user's settings: $XDG_CONFIG_HOME, else ~/.config, in the same way. Any
/// thread.
Result<std::filesystem::path> UserConfigFolder();

/// Makes a folder and those above it that do not exist; only the user can read new ones. The error
/// names the folder and the reason. Any thread.
Result<void> MakeUserFolder(const std::filesystem::path& folder);

} // namespace kits
