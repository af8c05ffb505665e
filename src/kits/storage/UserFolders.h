// SPDX-License-Identifier: GPL-3.0-or-later
// Where programs keep things for their user: XDG Base Directory, version 0.8.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>

namespace kits {

/// What a person makes: $XDG_DATA_HOME, else ~/.local/share. The error says what is not set.
Result<std::filesystem::path> UserDataFolder();
/// How he wants programs to be: $XDG_CONFIG_HOME, else ~/.config. The error as before.
Result<std::filesystem::path> UserConfigFolder();

/// Makes a folder and those above it, where they are not there; what is new is the user's alone.
/// The error names the folder and the reason. Any thread.
Result<void> MakeUserFolder(const std::filesystem::path& folder);

} // namespace kits
