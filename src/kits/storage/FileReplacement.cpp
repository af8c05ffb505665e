#include "kits/storage/FileReplacement.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kits {

namespace fs = std::filesystem;

namespace {

/// The rights that open(2) would give a new file: everybody's, less the process's mask. The mask
/// can only be read by setting it, which would race with other threads, so the kernel's report of
/// it is read instead; without one, the owner alone may use the file.
mode_t NewFileMode() {
    mode_t mask = 0077;
    if (FILE* status = std::fopen("/proc/self/status", "re")) {
        char line[256];
        while (std::fgets(line, sizeof line, status)) {
            if (std::strncmp(line, "Umask:", 6) == 0)
                mask = static_cast<mode_t>(std::strtoul(line + 6, nullptr, 8));
        }
        std::fclose(status);
    }
    return 0666 & ~mask;
}

/// Follows a link at `path` to the file that it names; a path without a link stays as it is.
fs::path Resolved(const fs::path& path) {
    std::error_code error;
    fs::path resolved = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : path;
    return error ? path : resolved;
}

} // namespace

Result<FileReplacement> FileReplacement::Create(const fs::path& path) {
    FileReplacement file;
    file.target = Resolved(path);
    struct stat existing {};
    const bool exists = ::stat(file.target.c_str(), &existing) == 0;
    if (exists && !S_ISREG(existing.st_mode))
        return file.Failure(S_ISDIR(existing.st_mode) ? EISDIR : EEXIST);
    // A rename would replace a file that its owner has protected against writing.
    if (exists && ::access(file.target.c_str(), W_OK) != 0)
        return file.Failure(errno);

    std::string pattern = (file.target.parent_path() / ".vexa-XXXXXX").string();
    file.descriptor = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (file.descriptor < 0)
        return file.Failure(errno);
    file.temporary = pattern;
    if (::fchmod(file.descriptor, exists ? existing.st_mode & 07777 : NewFileMode()) != 0)
        return file.Failure(errno);
    return Result<FileReplacement>(std::move(file));
}

FileReplacement::FileReplacement(FileReplacement&& other) noexcept
    : target(std::move(other.target)),
      temporary(std::exchange(other.temporary, {})),
      descriptor(std::exchange(other.descriptor, -1)) {}

FileReplacement::~FileReplacement() {
    if (descriptor >= 0)
        ::close(descriptor);
    if (!temporary.empty())
        ::unlink(temporary.c_str());
}

Result<void> FileReplacement::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return Failure(errno);
    }
    return {};
}

Result<void> FileReplacement::Commit() {
    // A file system without fsync (EINVAL) has nothing to wait for.
    if (::fsync(descriptor) != 0 && errno != EINVAL)
        return Failure(errno);
    if (::close(std::exchange(descriptor, -1)) != 0)
        return Failure(errno);
    if (::rename(temporary.c_str(), target.c_str()) != 0)
        return Failure(errno);
    temporary.clear();
    return {};
}

Error FileReplacement::Failure(int number) const {
    return {"could not write " + target.string() + ": " + std::strerror(number)};
}

Result<void> ReplaceFile(const fs::path& path, std::string_view bytes) {
    Result<FileReplacement> file = FileReplacement::Create(path);
    if (!file)
        return file.Fault();
    if (Result<void> written = file->Write(bytes); !written)
        return written;
    return file->Commit();
}

} // namespace kits
