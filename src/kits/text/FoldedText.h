// SPDX-License-Identifier: GPL-3.0-or-later
// Texts as a search compares them.
#pragma once

#include <string>
#include <string_view>

namespace kits {

/// Returns the text without case, accents and the differences of compatibility characters
/// (Unicode's case folding, NFKD without its marks). A text that is not UTF-8 loses ASCII's case
/// alone. Any thread.
std::string Folded(std::string_view text);

} // namespace kits
