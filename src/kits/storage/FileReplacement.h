// SPDX-License-Identifier: GPL-3.0-or-later
// Writing a file so that it is either replaced as a whole or not touched.
#pragma once

#include "kits/support/Descriptor.h"
#include "kits/support/Result.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace kits {

/// The new content of a file. It is written beside the file under a name of its own and takes the
/// file's place in one step; destroyed before that, it leaves nothing behind and the file as it
/// was. A symbolic link is followed, so the file that it names is replaced or made. An existing
/// file's extended attributes and permissions are kept, and its owner and group as far as the
/// system allows giving a file away. If a file has several names (hard links), only this name gets
/// the new content.
class FileReplacement {
  public:
    /// Creates the file beside `path`. The error names the path and the system's reason.
    static Result<FileReplacement> Create(const std::filesystem::path& path);

    FileReplacement(FileReplacement&& other) noexcept;
    FileReplacement& operator=(FileReplacement&&) = delete;
    ~FileReplacement();

    /// Returns the descriptor, which is open for reading and writing and remains the replacement's.
    int Descriptor() const { return descriptor.Number(); }

    Result<void> Write(std::string_view bytes);

    /// Flushes the content to the disk and puts it in the file's place.
    Result<void> Commit();

    /// Flushes the content to the disk and gives it the file's name if there is no file, else a
    /// free name beside it: "tune (2).wav" for "tune.wav". Returns its path.
    Result<std::filesystem::path> CommitBeside();

    /// Leaves the content under the name that it has now, after a commit has failed. Returns its
    /// path.
    std::filesystem::path Keep() { return std::exchange(temporary, {}); }

  private:
    FileReplacement() = default;
    Result<void> Complete();
    Error Failure(int number) const;
    Error Failure(const char* reason) const;

    std::filesystem::path target;
    std::filesystem::path temporary;
    kits::Descriptor descriptor;
};

/// Makes the whole of `bytes` the new content of the file at `path`.
Result<void> ReplaceFile(const std::filesystem::path& path, std::string_view bytes);

} // namespace kits
