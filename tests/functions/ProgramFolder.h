// SPDX-License-Identifier: GPL-3.0-or-later
// A program folder that exists as long as a test.
#pragma once

#include "functions/FunctionCompiler.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <set>
#include <string>

#include <link.h>

namespace test {

/// A program folder with the template that the program comes with, unless a test removes it.
class ProgramFolder {
  public:
    explicit ProgramFolder(const std::filesystem::path& name = "program")
        : path(folder.Path() / name) {
        std::filesystem::create_directories(Functions());
        WriteTemplate(OriginalTemplate());
    }

    static std::string OriginalTemplate() {
        return Contents(std::filesystem::path(VEXA_SOURCE_FOLDER) / "data/functions/addon.c");
    }

    const std::filesystem::path& Path() const { return path; }
    std::filesystem::path Functions() const { return path / "functions"; }
    std::string Function(const char* leaf) const { return (Functions() / leaf).string(); }
    void WriteTemplate(std::string_view text) const {
        std::ofstream(Functions() / "addon.c", std::ios::binary) << text;
    }
    /// Returns the names in the folder "functions", hidden ones included.
    std::set<std::string> Files() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(Functions()))
            names.insert(entry.path().filename().string());
        return names;
    }

  private:
    TemporaryFolder folder;
    std::filesystem::path path;
};

/// Returns the number of add-ons that this process has loaded.
inline int LoadedAddOns() {
    int count = 0;
    const auto look = [](dl_phdr_info* info, std::size_t, void* data) {
        if (std::string_view(info->dlpi_name).starts_with("/proc/self/fd/"))
            ++*static_cast<int*>(data);
        return 0;
    };
    ::dl_iterate_phdr(look, &count);
    return count;
}

} // namespace test
