// SPDX-License-Identifier: GPL-3.0-or-later
// A folder that exists as long as a test, and helpers for files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/xattr.h>

namespace test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "vexa-test-XXXXXX").string();
        if (!::mkdtemp(pattern.data()))
            throw std::runtime_error("no temporary folder");
        path = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return path; }

    /// Creates a file in the folder and returns its path.
    std::filesystem::path Write(const std::filesystem::path& name, std::string_view bytes) const {
        std::filesystem::create_directories((path / name).parent_path());
        std::ofstream(path / name, std::ios::binary) << bytes;
        return path / name;
    }

    /// Returns the number of entries in the folder, hidden ones included.
    std::size_t Count() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(path), {}));
    }

    /// Returns whether the file system stores attributes of files, such as their types.
    bool KeepsAttributes() const { return ::setxattr(path.c_str(), "user.probe", "", 0, 0) == 0; }

  private:
    std::filesystem::path path;
};

inline std::string Contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace test
