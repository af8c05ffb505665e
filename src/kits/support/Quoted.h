// SPDX-License-Identifier: GPL-3.0-or-later
// Texts from outside the program, made fit for messages.
#pragma once

#include <string>
#include <string_view>

namespace kits {

/// Returns the text made fit for one line of a terminal: shortened to 60 bytes and "...", with "?"
/// for each control character and each byte that is not part of a character in UTF-8.
std::string Shown(std::string_view text);

/// Returns what Shown returns, in double quotes.
std::string Quoted(std::string_view text);

} // namespace kits
