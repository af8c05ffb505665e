// SPDX-License-Identifier: GPL-3.0-or-later
// This tells where a plug-in finds samples and pictures.
#pragma once

#include "kits/storage/ProgramFolder.h"

namespace vexa {

/// A person's own content, as the program `vexa` keeps it, before that of `content`, which comes
/// with the plug-in; that alone where the environment names no folder of the person's.
kits::ProgramFolders HostedFolders(const std::filesystem::path& content);

} // namespace vexa
