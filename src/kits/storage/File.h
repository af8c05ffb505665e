// SPDX-License-Identifier: GPL-3.0-or-later
// A file as bytes, either read or written anew.
#pragma once

#include "kits/storage/Directory.h"
#include "kits/storage/FileReplacement.h"
#include "kits/support/DataIO.h"
#include "kits/support/Descriptor.h"

#include <optional>
#include <string>

// A file is opened either with B_READ_ONLY or with the sum of all the others.

constexpr uint32 B_READ_ONLY = 0;
constexpr uint32 B_WRITE_ONLY = 1;
constexpr uint32 B_CREATE_FILE = 0x0200;
constexpr uint32 B_ERASE_FILE = 0x0400;

/// A file that is written gets its new content at Commit; destroyed before that, it leaves nothing
/// behind and an old file as it was. Any thread.
class BFile : public BDataIO {
  public:
    BFile(const char* path, uint32 mode) { SetTo(path, mode); }
    /// Sets B_BAD_VALUE for a name that no file can have.
    BFile(const BDirectory* directory, const std::string& name, uint32 mode);
    BFile(const BFile&) = delete;
    BFile& operator=(const BFile&) = delete;

    status_t SetTo(const char* path, uint32 mode);
    /// Returns B_OK, or the reason why the file could not be opened.
    status_t InitCheck() const { return status; }

    ssize_t Write(const void* data, std::size_t size) override;
    /// Returns the number of bytes read, 0 at the end, or a negative status.
    ssize_t Read(void* data, std::size_t size);

    /// Flushes the written bytes to the disk, puts them in the file's place and closes the file.
    status_t Commit();

  private:
    kits::Descriptor descriptor;
    std::optional<kits::FileReplacement> replacement;
    status_t status = B_NO_INIT;
};
