// SPDX-License-Identifier: GPL-3.0-or-later
// Digests, by which a content is recognised without being kept.
#pragma once

#include "kits/support/Result.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kits {

/// Returns the SHA-256 of the bytes, as sha256sum writes it. Any thread.
std::string Digest(std::string_view bytes);

/// Returns the digest of a file's content, which is read like ReadFile's but not held as a whole.
/// The error names the path and the reason. Any thread.
Result<std::string> DigestOfFile(const std::filesystem::path& path);

} // namespace kits
