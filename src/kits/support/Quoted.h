// SPDX-License-Identifier: GPL-3.0-or-later
// Texts of others inside of messages.
#pragma once

#include <string>
#include <string_view>

namespace kits {

/// The text fit for one line of a terminal: shortened to 60 bytes and "...", and "?" for each
/// control character and each byte that is not of a character in UTF-8.
std::string Shown(std::string_view text);

/// Returns what Shown returns, in double quotes.
std::string Quoted(std::string_view text);

} // namespace kits
