// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/File.h"

#include "kits/storage/FileName.h"

#include <fcntl.h>
#include <unistd.h>

BFile::BFile(const BDirectory* directory, const std::string& name, uint32 mode) {
    if (!kits::CheckFileName(name))
        status = B_BAD_VALUE;
    else if (directory->InitCheck() != B_OK)
        status = directory->InitCheck();
    else
        SetTo(BPath(directory->Path().Path(), name.c_str()).Path(), mode);
}

status_t BFile::SetTo(const char* path, uint32 mode) {
    descriptor.Close();
    replacement.reset();
    if (mode == B_READ_ONLY) {
        descriptor = kits::Descriptor(::open(path, O_RDONLY | O_CLOEXEC));
        return status = descriptor ? B_OK : -errno;
    }
    if (mode != (B_WRITE_ONLY | B_CREATE_FILE | B_ERASE_FILE))
        return status = B_BAD_VALUE;
    kits::Result<kits::FileReplacement> created = kits::FileReplacement::Create(path);
    if (!created)
        return status = B_IO_ERROR;
    replacement.emplace(*std::move(created));
    return status = B_OK;
}

ssize_t BFile::Write(const void* data, std::size_t size) {
    if (!replacement)
        return B_NO_INIT;
    if (!replacement->Write({static_cast<const char*>(data), size}))
        return B_IO_ERROR;
    return static_cast<ssize_t>(size);
}

ssize_t BFile::Read(void* data, std::size_t size) {
    if (!descriptor)
        return B_NO_INIT;
    while (true) {
        const ssize_t count = ::read(descriptor.Number(), data, size);
        if (count >= 0)
            return count;
        if (errno != EINTR)
            return -errno;
    }
}

status_t BFile::Commit() {
    if (!replacement)
        return B_NO_INIT;
    const bool done = static_cast<bool>(replacement->Commit());
    replacement.reset();
    return done ? B_OK : B_IO_ERROR;
}
