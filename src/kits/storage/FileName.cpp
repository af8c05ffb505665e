// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/storage/FileName.h"

#include "kits/support/Quoted.h"
#include "kits/support/Utf8.h"

#include <algorithm>

namespace kits {

namespace {

bool IsUtf8(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = FirstCharacter(text).length;
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
