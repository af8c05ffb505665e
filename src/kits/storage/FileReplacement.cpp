// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FileReplacement.h"

#include "kits/storage/FileKind.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace kits {

namespace fs = std::filesystem;

namespace {

/// Creates a file of a random name in the folder and opens it. Returns no descriptor, and the
/// reason in errno, if it cannot be made. In contrast to mkostemp, whose files are their owner's
/// alone, the system takes from `mode` what the process's mask or the folder's own access list
/// withholds.
Descriptor CreateIn(const fs::path& folder, mode_t mode, fs::path& path) {
    constexpr std::string_view kCharacters = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr int kMostTries = 100;
    std::random_device random;
    for (int i = 0; i < kMostTries; i++) {
        std::string name = ".vexa-";
        for (int n = 0; n < 6; n++)
            name += kCharacters[random() % kCharacters.size()];
        path = folder / name;
        Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode));
        if (file || errno != EEXIST)
            return file;
    }
    return Descriptor();
}

/// Returns the path to which a link at `path` leads, over further links, whether there is a file or
/// not; a path that is no link is returned as it is.
fs::path Resolved(fs::path path) {
    // The kernel's limit. Links that go round in a circle remain links, which it refuses to open.
    constexpr int kMostLinks = 40;
    for (int i = 0; i < kMostLinks; i++) {
        std::error_code isNoLink;
        const fs::path next = fs::read_symlink(path, isNoLink);
        if (isNoLink)
            break;
        path = path.parent_path() / next;
    }
    return path;
}

/// Returns true if the error means that the system withholds the attribute, or does not support
/// attributes, rather than a failure.
bool IsWithheld(int fault) {
    return fault == ENOTSUP || fault == EPERM || fault == EACCES || fault == ENODATA;
}

/// Gives a new file the extended attributes of an old one, access lists among them. Returns 0 or
/// the error number. Attributes that this process may not read or set, because only the system or
/// root may, are left out.
int TakeOverAttributes(const char* old, int descriptor) {
    // The kernel's limits for the size of the list and of a value.
    std::string names(64 * 1024, '\0');
    std::string value(64 * 1024, '\0');
    const ssize_t length = ::listxattr(old, names.data(), names.size());
    if (length < 0)
        return IsWithheld(errno) ? 0 : errno;
    names.resize(static_cast<std::size_t>(length));
    for (std::size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
        const ssize_t size = ::getxattr(old, &names[at], value.data(), value.size());
        const bool failed = size < 0 || ::fsetxattr(descriptor, &names[at], value.data(),
                                                    static_cast<std::size_t>(size), 0) != 0;
        if (failed && !IsWithheld(errno))
            return errno;
    }
    return 0;
}

/// Gives a new file the owner, the permissions and the attributes of an old one. Returns 0 or the
/// error number.
int TakeOver(const char* old, const struct stat& status, int descriptor) {
    // Only root may give a file away; otherwise this process owns it, in the old file's group if it
    // is a member. A file that belonged to another owner must then not run with this process's
    // identity, so the set-id bits are dropped.
    mode_t rights = status.st_mode & 07777;
    const auto giveTo = [&](uid_t owner) {
        return ::fchown(descriptor, owner, status.st_gid) == 0;
    };
    if (!giveTo(status.st_uid)) {
        giveTo(static_cast<uid_t>(-1));
        rights &= 0777;
    }
    // The folder may have given the new file an access list, which the old one need not have.
    ::fremovexattr(descriptor, "system.posix_acl_access");
    // Set before the access lists, which are attributes and refine the permissions. Network folders
    // and file systems without permissions refuse it, though their files can be written.
    if (::fchmod(descriptor, rights) != 0 && !IsWithheld(errno))
        return errno;
    return TakeOverAttributes(old, descriptor);
}

/// Renames a file unless there is another one of the new name, even one that has come just now;
/// errno is EEXIST then. Not every file system can do that in one step.
bool RenameBeside(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    if (errno != EINVAL && errno != ENOSYS)
        return false;
    if (::access(to.c_str(), F_OK) == 0) {
        errno = EEXIST;
        return false;
    }
    return ::rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

Result<FileReplacement> FileReplacement::Create(const fs::path& path) {
    FileReplacement file;
    file.target = Resolved(path);
    struct stat existing {};
    const bool exists = ::stat(file.target.c_str(), &existing) == 0;
    // An error such as a name that is too long, which would otherwise show only after everything is
    // written.
    if (!exists && errno != ENOENT)
        return file.Failure(errno);
    if (exists && !S_ISREG(existing.st_mode))
        return file.Failure(WhatItIs(existing.st_mode));
    // A rename would replace even a file that its owner has protected against writing.
    if (exists && ::access(file.target.c_str(), W_OK) != 0)
        return file.Failure(errno);

    // In the place of an existing file, nobody else may open it before it has that file's rights.
    fs::path created;
    file.descriptor = CreateIn(file.target.parent_path(), exists ? 0600 : 0666, created);
    if (!file.descriptor)
        return file.Failure(errno);
    file.temporary = created;
    if (exists) {
        if (const int fault = TakeOver(file.target.c_str(), existing, file.Descriptor());
            fault != 0)
            return file.Failure(fault);
    }
    return Result<FileReplacement>(std::move(file));
}

FileReplacement::FileReplacement(FileReplacement&& other) noexcept
    : target(std::move(other.target)),
      temporary(std::exchange(other.temporary, {})),
      descriptor(std::move(other.descriptor)) {}

FileReplacement::~FileReplacement() {
    if (!temporary.empty())
        ::unlink(temporary.c_str());
}

Result<void> FileReplacement::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(Descriptor(), bytes.data(), bytes.size());
        if (written >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(written));
        else if (errno != EINTR)
            return Failure(errno);
    }
    return {};
}

/// Flushes the content to the disk and closes the file.
Result<void> FileReplacement::Complete() {
    // EINVAL: the file system has no fsync, so there is nothing to wait for.
    if (::fsync(Descriptor()) != 0 && errno != EINVAL)
        return Failure(errno);
    if (!descriptor.Close())
        return Failure(errno);
    return {};
}

Result<void> FileReplacement::Commit() {
    if (auto completed = Complete(); !completed)
        return completed;
    if (::rename(temporary.c_str(), target.c_str()) != 0)
        return Failure(errno);
    temporary.clear();
    return {};
}

Result<fs::path> FileReplacement::CommitBeside() {
    if (const auto completed = Complete(); !completed)
        return completed.Fault();
    const fs::path named = target;
    for (int number = 2; !RenameBeside(temporary, target); number++) {
        if (errno != EEXIST)
            return Failure(errno);
        target = named.parent_path() / (named.stem().string() + " (" + std::to_string(number) +
                                        ")" + named.extension().string());
    }
    temporary.clear();
    return target;
}

Error FileReplacement::Failure(int number) const {
    return Failure(std::strerror(number));
}

Error FileReplacement::Failure(const char* reason) const {
    return {"could not write " + target.string() + ": " + reason};
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
