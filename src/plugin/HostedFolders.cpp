// SPDX-License-Identifier: GPL-3.0-or-later
#include "plugin/HostedFolders.h"

#include <cstdlib>

namespace vexa {

kits::ProgramFolders HostedFolders(const std::filesystem::path& content) {
    const char* data = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    const std::filesystem::path own =
        data && *data == '/' ? std::filesystem::path(data) / "vexa"
                             : std::filesystem::path(home ? home : "/") / ".local/share/vexa";
    return {own, content};
}

} // namespace vexa
