// SPDX-License-Identifier: GPL-3.0-or-later
// This reads a whole file at once.
#pragma once

#include "kits/support/Descriptor.h"
#include "kits/support/Result.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace kits {

/// The longest file, in bytes, that is read as a whole unless a caller says otherwise.
constexpr std::size_t kMostFileBytes = std::size_t{64} << 20;

/// Opens the regular file at `path`, links followed, for reading. A pipe, a device, a socket and a
/// folder are refused without touching them, so this neither waits for anybody nor sets anything
/// off. The error names the path and the reason. Any thread.
Result<Descriptor> OpenRegularFile(const std::filesystem::path& path);

/// Reads the regular file at `path`, opened as by OpenRegularFile. A file of more than `most` bytes
/// is refused by the length that the system tells, or where it grows beyond that. The error names
/// the path and the reason. Any thread.
Result<std::string> ReadFile(const std::filesystem::path& path, std::size_t most = kMostFileBytes);

/// Reads as ReadFile does, but from a pipe or a device too, and waits for its end. For files that a
/// person names on a command line. Any thread that may wait.
Result<std::string> ReadStream(const std::filesystem::path& path,
                               std::size_t most = kMostFileBytes);

} // namespace kits
