#include "kits/storage/ProgramFolder.h"

#include <cstdlib>

#include <unistd.h>

namespace kits {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFolders[] = {"functions", "sounds", "samples"};

Result<fs::path> UserDataFolder() {
    // An empty or relative $XDG_DATA_HOME does not count (XDG Base Directory, version 0.8).
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && fs::path(data).is_absolute())
        return fs::path(data);
    if (const char* home = std::getenv("HOME"); home && *home)
        return fs::path(home) / ".local/share";
    return Error{"no folder for the program's data: neither XDG_DATA_HOME nor HOME is set"};
}

/// Copies the program's folders to a name beside `folder` and renames: whole or not at all.
void Fill(const fs::path& folder, std::error_code& error) {
    fs::create_directories(folder.parent_path(), error);
    if (error)
        return;
    std::string beside = (folder.string() + ".XXXXXX");
    if (!::mkdtemp(beside.data())) {
        error = {errno, std::system_category()};
        return;
    }
    for (const char* name : kFolders) {
        const fs::path original = ProgramFile().parent_path() / name;
        if (!error && fs::exists(original))
            fs::copy(original, fs::path(beside) / name, fs::copy_options::recursive, error);
    }
    if (!error)
        fs::rename(beside, folder, error);
    if (error) {
        std::error_code ignored;
        // One by one, as each level would take one of the descriptors that there may be too few of.
        for (const char* name : kFolders)
            fs::remove_all(fs::path(beside) / name, ignored);
        fs::remove(beside, ignored);
        // Another instance may have been quicker.
        if (fs::is_directory(folder / kFolders[0], ignored))
            error.clear();
    }
}

} // namespace

fs::path ProgramFile() {
    std::error_code ignored;
    return fs::read_symlink("/proc/self/exe", ignored);
}

Result<fs::path> ProgramFolder(const fs::path& name) {
    const fs::path own = ProgramFile().parent_path();
    if (::access((own / kFolders[0]).c_str(), W_OK | X_OK) == 0 &&
        ::access((own / kFolders[1]).c_str(), W_OK | X_OK) == 0)
        return own;
    Result<fs::path> data = UserDataFolder();
    if (!data)
        return data;
    const fs::path folder = *data / name;
    std::error_code error;
    if (!fs::exists(folder, error))
        Fill(folder, error);
    if (error)
        return Error{"could not create the program's folder " + folder.string() + ": " +
                     error.message()};
    return folder;
}

} // namespace kits
