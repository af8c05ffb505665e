// SPDX-License-Identifier: GPL-3.0-or-later
// Normalises texts for searches.
#pragma once

#include <string>
#include <string_view>

namespace kits {

/// Returns the text without differences of case, accents and compatibility characters (Unicode's
/// case folding, and NFKD without its marks). In a text that is not valid UTF-8, only ASCII letters
/// are folded. Any thread.
std::string Folded(std::string_view text);

} // namespace kits
