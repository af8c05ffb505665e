// A folder that lives as long as a test, and what tests do with files.
#pragma once

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/resource.h>

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

    /// Entries in the folder, hidden ones included.
    std::size_t Count() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(path), {}));
    }

  private:
    std::filesystem::path path;
};

inline std::string Contents(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Runs `work` while no file of this process can grow beyond `bytes`: what a full disk does to a
/// writer, without filling one.
inline void WithFileSizeLimit(rlim_t bytes, const std::function<void()>& work) {
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    auto* handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    work();
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
}

} // namespace test
