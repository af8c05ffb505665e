// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Utf8.h"

namespace kits {

Utf8Character FirstCharacter(std::string_view text) {
    const auto byte = [text](std::size_t i) -> unsigned {
        return static_cast<unsigned char>(text[i]);
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return {1, first};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    char32_t code = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; i++) {
        if (i >= text.size() || BeginsCharacter(text[i]))
            return {};
        code = code << 6 | (byte(i) & 0x3FU);
    }
    constexpr char32_t kLowest[] = {0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code < 0xE000;
    if (first < 0xC0 || first >= 0xF8 || code < kLowest[length - 2] || code > 0x10FFFF || surrogate)
        return {};
    return {length, code};
}

} // namespace kits
