// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/HostedFolders.h"

#include "kits/storage/UserFolders.h"

namespace vexa {

kits::ProgramFolders HostedFolders(const std::filesystem::path& content) {
    const auto data = kits::UserDataFolder();
    return {data ? *data / "vexa" : content, content};
}

} // namespace vexa
