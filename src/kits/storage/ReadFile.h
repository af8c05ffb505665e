// SPDX-License-Identifier: GPL-3.0-or-later
// Reads a whole file at once.
#pragma once

#include "kits/support/Descriptor.h"
#include "kits/support/Result.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace kits {

/// The largest file, in bytes, that is read as a whole unless the caller sets another limit.
constexpr std::size_t kMostFileBytes = std::size_t{64} << 20;

/// Opens the regular file at `path`, links followed, for reading. A pipe, a device, a socket and a
/// folder are refused without being opened, so the call neither waits for another program nor has
/// side effects. The error names the path and the reason. Any thread.
Result<Descriptor> OpenRegularFile(const std::filesystem::path& path);

/// Reads the regular file at `path`, opened as by OpenRegularFile. A file of more than `most` bytes
/// is refused, whether by the size that the system reports or because it grows beyond that. The
/// error names the path and the reason. Any thread.
Result<std::string> ReadFile(const std::filesystem::path& path, std::size_t most = kMostFileBytes);

/// Reads as ReadFile does, at most kMostFileBytes, but holds only a piece at a time, which it
/// passes to `take`. An error may come after the first pieces. Any thread.
Result<void> ReadFileInPieces(const std::filesystem::path& path,
                              const std::function<void(std::string_view)>& take);

/// Reads as ReadFile does, but also from a pipe or a device, and waits for its end. For files that
/// a person names on a command line. Any thread that may wait.
Result<std::string> ReadStream(const std::filesystem::path& path,
                               std::size_t most = kMostFileBytes);

} // namespace kits
