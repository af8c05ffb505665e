// SPDX-License-Identifier: GPL-3.0-or-later
// This tells where programs keep things for their user, by XDG Base Directory, version 0.8.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>

namespace kits {

/// Returns the folder of what a person makes: $XDG_DATA_HOME, else ~/.local/share. The error says
/// which variable is not set. Any thread.
Result<std::filesystem::path> UserDataFolder();
/// Returns the folder of how a person wants programs to be: $XDG_CONFIG_HOME, else ~/.config. The
/// error says which variable is not set. Any thread.
Result<std::filesystem::path> UserConfigFolder();

/// Makes a folder and those above it that are not there; what is new can be read by the user alone.
/// The error names the folder and the reason. Any thread.
Result<void> MakeUserFolder(const std::filesystem::path& folder);

} // namespace kits
