// SPDX-License-Identifier: GPL-3.0-or-later
// Removes the blanks at both ends of a text.
#pragma once

#include <algorithm>
#include <string_view>

namespace kits {

/// Returns the part of the text between the blanks at its ends; empty if it holds nothing else. Any
/// thread.
constexpr std::string_view Trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

} // namespace kits
