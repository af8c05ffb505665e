// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/Quoted.h"

#include "kits/support/Utf8.h"

namespace kits {

namespace {

constexpr std::size_t kLongest = 60;

/// Returns the number of bytes of the character at the front of the text; 0 if that is not valid
/// UTF-8 or is a control character.
std::size_t PrintableLength(std::string_view text) {
    const auto [length, code] = FirstCharacter(text);
    const bool control = code < ' ' || (code >= 0x7F && code < 0xA0);
    return control ? 0 : length;
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
