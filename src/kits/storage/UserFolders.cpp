// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/UserFolders.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kits {

namespace fs = std::filesystem;

namespace {

/// Returns the user's home folder: $HOME or, where it is not set, as in some services, that of the
/// user database; empty if there is none.
fs::path Home() {
    if (const char* home = std::getenv("HOME"); home && *home)
        return home;
    constexpr std::size_t kLongestEntry = 16384;
    std::vector<char> texts(kLongestEntry);
    passwd entry{};
    passwd* found = nullptr;
    const int error = ::getpwuid_r(::getuid(), &entry, texts.data(), texts.size(), &found);
    return error == 0 && found && found->pw_dir ? found->pw_dir : "";
}

Result<fs::path> UserFolder(const char* variable, const char* belowHome, const char* what) {
    // An empty or relative path is ignored.
    if (const char* folder = std::getenv(variable); folder && fs::path(folder).is_absolute())
        return fs::path(folder);
    if (const fs::path home = Home(); !home.empty())
        return home / belowHome;
    return Error{std::string("no folder for the program's ") + what + ": neither " + variable +
                 " nor HOME is set, and the user database names no home"};
}

void MakeFolder(const fs::path& folder, std::error_code& error) {
    if (fs::is_directory(folder, error))
        return;
    error.clear();
    if (folder.has_relative_path())
        MakeFolder(folder.parent_path(), error);
    // Another process may have made the folder meanwhile.
    if (!error && ::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
        error = {errno, std::system_category()};
    if (!error && !fs::is_directory(folder, error) && !error)
        error = std::make_error_code(std::errc::not_a_directory);
}

} // namespace

Result<fs::path> UserDataFolder() {
    return UserFolder("XDG_DATA_HOME", ".local/share", "data");
}

Result<fs::path> UserConfigFolder() {
    return UserFolder("XDG_CONFIG_HOME", ".config", "settings");
}

Result<void> MakeUserFolder(const fs::path& folder) {
    std::error_code error;
    MakeFolder(folder, error);
    if (error)
        return Error{"could not create the folder " + folder.string() + ": " + error.message()};
    return {};
}

} // namespace kits
