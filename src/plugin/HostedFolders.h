// SPDX-License-Identifier: GPL-3.0-or-later
// The folders in which a plug-in finds samples and pictures.
#pragma once

#include "kits/storage/ProgramFolder.h"

namespace vexa {

/// Returns the user's own content, as the program `vexa` keeps it, followed by `content`, which is
/// shipped with the plug-in; only `content` if the user has no home.
kits::ProgramFolders HostedFolders(const std::filesystem::path& content);

} // namespace vexa
