// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/CompileFolder.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vexa {

namespace fs = std::filesystem;

namespace {

constexpr const char* kPrefix = ".compile-";

/// Returns the folder's lock; an empty descriptor if the folder cannot be opened, belongs to
/// another user or is locked already.
kits::Descriptor Lock(const fs::path& folder) {
    kits::Descriptor descriptor(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!descriptor || ::fstat(descriptor.Number(), &status) != 0 || status.st_uid != ::geteuid() ||
        ::flock(descriptor.Number(), LOCK_EX | LOCK_NB) != 0)
        return kits::Descriptor();
    return descriptor;
}

/// Removes the folders that no process has locked. Among them may be one that was created just now
/// and is not locked yet; its creator notices that.
void RemoveLeftOvers(const fs::path& parent) {
    std::error_code error;
    for (fs::directory_iterator entry(parent, error), end; !error && entry != end;
         entry.increment(error)) {
        if (!entry->path().filename().string().starts_with(kPrefix))
            continue;
        if (const kits::Descriptor lock = Lock(entry->path()); lock) {
            std::error_code ignored;
            fs::remove_all(entry->path(), ignored);
        }
    }
}

/// Returns true if users other than this one and root may write to the folder.
bool OthersMayWrite(const struct stat& status) {
    const bool group = (status.st_mode & S_IWGRP) != 0 && status.st_gid != ::getegid();
    return group || (status.st_mode & S_IWOTH) != 0;
}

/// Returns why another user could put files into the folder, or replace its files or the folder
/// itself; nothing if none could. Root may use a folder of any owner.
std::optional<std::string> SharedWithOthers(const fs::path& folder) {
    const std::unique_ptr<char, decltype(&std::free)> path(::realpath(folder.c_str(), nullptr),
                                                           &std::free);
    struct stat status {};
    if (!path || ::stat(path.get(), &status) != 0)
        return std::string(std::strerror(errno));
    const uid_t user = ::geteuid();
    if (user != 0 && status.st_uid != user && status.st_uid != 0)
        return "it belongs to another user, who could replace what is compiled there";
    const auto shared = [](const std::string& which, const fs::path& where) {
        return "other users can write to " + which +
               " and could replace what is compiled there; "
               "change that with: chmod go-w " +
               where.string();
    };
    if (OthersMayWrite(status))
        return shared("it", folder);
    // In a folder with the sticky bit, such as /tmp, users can rename only their own files.
    for (fs::path above = fs::path(path.get()).parent_path();; above = above.parent_path()) {
        if (::stat(above.c_str(), &status) != 0)
            return above.string() + ": " + std::strerror(errno);
        if (OthersMayWrite(status) && (status.st_mode & S_ISVTX) == 0)
            return shared(above.string(), above);
        if (above == above.parent_path())
            return std::nullopt;
    }
}

} // namespace

kits::Result<CompileFolder> CompileFolder::Create(const fs::path& parent) {
    const auto failure = [&parent](const std::string& reason) {
        return kits::Error{"could not create a folder in " + parent.string() + ": " + reason};
    };
    if (const auto reason = SharedWithOthers(parent))
        return failure(*reason);
    RemoveLeftOvers(parent);
    // A further attempt is needed only if another program took the new folder for a left-over.
    for (int attempt = 0; attempt < 100; attempt++) {
        std::string pattern = (parent / (std::string(kPrefix) + "XXXXXX")).string();
        if (!::mkdtemp(pattern.data()))
            return failure(std::strerror(errno));
        kits::Descriptor lock = Lock(pattern);
        const int fault = errno;
        struct stat locked {};
        struct stat there {};
        if (lock && ::fstat(lock.Number(), &locked) == 0 && ::stat(pattern.c_str(), &there) == 0 &&
            locked.st_ino == there.st_ino)
            return CompileFolder(pattern, std::move(lock));
        // If folders cannot be locked (network file systems), no program takes this one for a
        // left-over.
        if (!lock && fault != EWOULDBLOCK && fault != ENOENT && fault != EMFILE && fault != ENFILE)
            return CompileFolder(pattern, kits::Descriptor());
        // The folder is empty, so rmdir suffices; remove_all would need a descriptor.
        ::rmdir(pattern.c_str());
        if (fault == EMFILE || fault == ENFILE)
            return failure(std::strerror(fault));
    }
    return failure("it cannot be locked");
}

CompileFolder::CompileFolder(fs::path path, kits::Descriptor lock)
    : path(std::move(path)), lock(std::move(lock)) {}

CompileFolder::CompileFolder(CompileFolder&& other) noexcept
    : path(std::exchange(other.path, {})), lock(std::move(other.lock)) {}

CompileFolder::~CompileFolder() {
    std::error_code ignored;
    // Closing the lock frees a descriptor, which remove_all needs.
    lock.Close();
    if (!path.empty())
        fs::remove_all(path, ignored);
}

} // namespace vexa
