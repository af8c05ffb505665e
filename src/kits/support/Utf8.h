// SPDX-License-Identifier: GPL-3.0-or-later
// The characters of texts in UTF-8.
#pragma once

#include <cstddef>
#include <string_view>

namespace kits {

struct Utf8Character {
    /// The number of bytes; 0 if they are not valid: no overlong forms, no surrogates, nothing
    /// above U+10FFFF.
    std::size_t length = 0;
    char32_t code = 0;
};

/// Returns the character at the front of `text`, which is not empty.
Utf8Character FirstCharacter(std::string_view text);

/// Returns whether a byte begins a character; a character's other bytes are 10xxxxxx in binary.
constexpr bool BeginsCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

} // namespace kits
