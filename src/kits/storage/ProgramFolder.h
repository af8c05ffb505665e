// Where the program finds what lies beside it.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>

namespace kits {

/// The file that the running program was started from.
std::filesystem::path ProgramFile();

/// The folder that holds functions/, sounds/ and samples/ and that the user can write to: the
/// program's own or, where that cannot be written (an installed program), `name` in the user's data
/// folder ($XDG_DATA_HOME, else ~/.local/share), which is filled from the program's own the first
/// time. Fails when neither can be had.
Result<std::filesystem::path> ProgramFolder(const std::filesystem::path& name);

} // namespace kits
