// SPDX-License-Identifier: GPL-3.0-or-later
// This tells which names a file may be given.
#pragma once

#include "kits/support/Result.h"

#include <string_view>

namespace kits {

/// The longest name, in bytes, that file systems take.
constexpr std::size_t kLongestFileName = 255;

/// Checks that a file can be created under `name`, which is to be one step of a path. It refuses an
/// empty name, "." and "..", a slash, control characters (a line feed among them), which would
/// break the lines of lists and messages, text that is not UTF-8, and what is longer than
/// kLongestFileName. The error says why, for the user. Nothing is touched. Any thread.
Result<void> CheckFileName(std::string_view name);

} // namespace kits
