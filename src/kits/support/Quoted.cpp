// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Quoted.h"

#include <cstdint>

namespace kits {

namespace {

constexpr std::size_t kLongest = 60;

unsigned char ByteAt(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
}

/// Returns the number of bytes of the character at the front of the text; 0 if that is not valid
/// UTF-8 or is a control character.
std::size_t PrintableLength(std::string_view text) {
    const unsigned char first = ByteAt(text, 0);
    if (first < 0x80)
        return first >= ' ' && first != 0x7F ? 1 : 0;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    std::uint32_t code = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; i++) {
        if ((ByteAt(text, i) & 0xC0) != 0x80)
            return 0;
        code = code << 6 | (ByteAt(text, i) & 0x3FU);
    }
    // Excludes overlong forms, the control characters U+0080..U+009F, surrogates and what exceeds
    // U+10FFFF.
    constexpr std::uint32_t kLeast[] = {0, 0, 0xA0, 0x800, 0x10000};
    if (first < 0xC2 || code < kLeast[length] || (code >= 0xD800 && code < 0xE000) ||
        code > 0x10FFFF)
        return 0;
    return length;
}

} // namespace

std::string Shown(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t length = PrintableLength(text);
        if (shown.size() + (length == 0 ? 1 : length) > kLongest)
            return shown + "...";
        shown.append(length == 0 ? "?" : text.substr(0, length));
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return shown;
}

std::string Quoted(std::string_view text) {
    return '"' + Shown(text) + '"';
}

} // namespace kits
