// SPDX-License-Identifier: GPL-3.0-or-later
// Sounds by number, as program changes choose them.
#pragma once

#include "kits/storage/ProgramFolder.h"
#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <filesystem>

namespace vexa {

/// The sound with that number, from 0 in byte order of file names, a person's own and those that
/// came with the program together. The error says how many there are.
kits::Result<std::filesystem::path> FindProgram(const kits::ProgramFolders& folders, int32 number);

} // namespace vexa
