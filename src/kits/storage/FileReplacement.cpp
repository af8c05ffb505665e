// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FileReplacement.h"

#include "kits/storage/FileKind.h"
#include "kits/storage/ReadFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace kits {

namespace fs = std::filesystem;

namespace {

/// The rights that open(2) would give a new file: everybody's, less the process's mask. The mask
/// can only be read by setting it, which would race with other threads, so the kernel's report of
/// it is read instead; without one, the owner alone may use the file.
mode_t NewFileMode() {
    constexpr std::string_view kLine = "\nUmask:";
    const Result<std::string> status = ReadFile("/proc/self/status");
    const std::size_t at = status ? status->find(kLine) : std::string::npos;
    const unsigned long mask =
        at == std::string::npos ? 0077 : std::strtoul(&(*status)[at + kLine.size()], nullptr, 8);
    return 0666 & ~static_cast<mode_t>(mask);
}

/// Follows a link at `path` to the file that it names; a path without a link stays as it is.
fs::path Resolved(const fs::path& path) {
    std::error_code error;
    fs::path resolved = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : path;
    return error ? path : resolved;
}

/// True where the system withholds the attribute, or has no room for such things, rather than
/// failing.
bool IsWithheld(int fault) {
    return fault == ENOTSUP || fault == EPERM || fault == EACCES || fault == ENODATA;
}

/// Gives a new file the extended attributes of an old one, access lists among them; 0 or the error
/// number. Attributes that only the system or root may set or read are left out where that is not
/// us.
int TakeOverAttributes(const char* old, int descriptor) {
    // The kernel's limits for the list and for a value.
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

/// Gives a new file the owner, the rights and the attributes of an old one; 0 or the error number.
int TakeOver(const char* old, const struct stat& status, int descriptor) {
    // Only root may give a file away; then it is ours, in the old file's group if we are in it. A
    // file of another owner must not run in our name.
    mode_t rights = status.st_mode & 07777;
    const auto giveTo = [&](uid_t owner) {
        return ::fchown(descriptor, owner, status.st_gid) == 0;
    };
    if (!giveTo(status.st_uid)) {
        giveTo(static_cast<uid_t>(-1));
        rights &= 0777;
    }
    // Access lists, which are attributes, refine the rights.
    if (::fchmod(descriptor, rights) != 0)
        return errno;
    return TakeOverAttributes(old, descriptor);
}

} // namespace

Result<FileReplacement> FileReplacement::Create(const fs::path& path) {
    FileReplacement file;
    file.target = Resolved(path);
    struct stat existing {};
    const bool exists = ::stat(file.target.c_str(), &existing) == 0;
    // Such as that the name is too long, which would come out only when all is written.
    if (!exists && errno != ENOENT)
        return file.Failure(errno);
    if (exists && !S_ISREG(existing.st_mode))
        return file.Failure(WhatItIs(existing.st_mode));
    // A rename would replace a file that its owner has protected against writing.
    if (exists && ::access(file.target.c_str(), W_OK) != 0)
        return file.Failure(errno);

    std::string pattern = (file.target.parent_path() / ".vexa-XXXXXX").string();
    file.descriptor = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (file.descriptor < 0)
        return file.Failure(errno);
    file.temporary = pattern;
    if (!exists && ::fchmod(file.descriptor, NewFileMode()) != 0)
        return file.Failure(errno);
    if (exists) {
        if (const int fault = TakeOver(file.target.c_str(), existing, file.descriptor); fault != 0)
            return file.Failure(fault);
    }
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
