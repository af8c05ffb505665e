// SPDX-License-Identifier: GPL-3.0-or-later
// The names that a file may be given.
#pragma once

#include "kits/support/Result.h"

#include <string_view>

namespace kits {

/// The longest name, in bytes, that file systems accept.
constexpr std::size_t kLongestFileName = 255;

/// Checks that a file can be created under `name`, a single component of a path. It rejects an
/// empty name, "." and "..", a slash, a dot at the beginning, which hides the file, control
/// characters (a line feed among them), which would break the lines of lists and messages, text
/// that is not UTF-8, and names longer than kLongestFileName. The error says why, for the user. The
/// file system is not touched. Any thread.
Result<void> CheckFileName(std::string_view name);

} // namespace kits
