// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FileName.h"

#include "kits/support/Quoted.h"

#include <algorithm>

namespace kits {

namespace {

/// Returns the length in bytes of the UTF-8 character at the start of `text`, which is not empty; 0
/// if it is invalid: no overlong forms, no surrogates, nothing above U+10FFFF.
std::size_t CharacterLength(std::string_view text) {
    const auto byte = [text](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    unsigned code = first & (0xffU >> (length + 1));
    for (std::size_t i = 1; i < length; i++) {
        if ((byte(i) & 0xc0U) != 0x80)
            return 0;
        code = code << 6 | (byte(i) & 0x3fU);
    }
    constexpr unsigned kLowest[] = {0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code < 0xe000;
    return first < 0xc0 || code < kLowest[length - 2] || code > 0x10ffff || surrogate ? 0 : length;
}

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = CharacterLength(text);
        if (length == 0)
            return false;
        text.remove_prefix(length);
    }
    return true;
}

} // namespace

Result<void> CheckFileName(std::string_view name) {
    if (name.empty())
        return Error{"The file needs a name."};
    if (name == "." || name == "..")
        return Error{Quoted(name) + " is the name of a folder."};
    if (name.find('/') != std::string_view::npos)
        return Error{Quoted(name) + " contains a slash, which separates folders."};
    if (name.front() == '.')
        return Error{Quoted(name) + " begins with a dot, by which files are hidden from lists."};
    if (std::any_of(name.begin(), name.end(), [](char character) {
            const auto byte = static_cast<unsigned char>(character);
            return byte < ' ' || byte == 0x7f;
        }))
        return Error{Quoted(name) + " contains a character that cannot be shown."};
    if (name.size() > kLongestFileName)
        return Error{Quoted(name) + " is longer than " + std::to_string(kLongestFileName) +
                     " bytes."};
    if (!IsUtf8(name))
        return Error{Quoted(name) + " is not a text in UTF-8."};
    return {};
}

} // namespace kits
