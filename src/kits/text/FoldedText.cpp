// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/text/FoldedText.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

#include <utf8proc.h>

namespace kits {

std::string Folded(std::string_view text) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    if (!std::all_of(text.begin(), text.end(), isAscii)) {
        utf8proc_uint8_t* folded = nullptr;
        const utf8proc_ssize_t length = utf8proc_map(
            reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
            static_cast<utf8proc_ssize_t>(text.size()), &folded,
            static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPAT | UTF8PROC_DECOMPOSE |
                                           UTF8PROC_CASEFOLD | UTF8PROC_STRIPMARK));
        const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owned(folded, &std::free);
        if (length >= 0)
            return {reinterpret_cast<const char*>(folded), static_cast<std::size_t>(length)};
    }
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

} // namespace kits
