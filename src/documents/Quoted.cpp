#include "documents/Quoted.h"

#include <algorithm>

namespace vexa {

std::string Quoted(std::string_view text) {
    constexpr std::size_t kLongest = 60;
    std::string shown(text.substr(0, kLongest));
    std::replace_if(
        shown.begin(), shown.end(),
        [](char byte) { return static_cast<unsigned char>(byte) < ' ' || byte == '\x7F'; }, '?');
    return '"' + shown + (text.size() > kLongest ? "...\"" : "\"");
}

} // namespace vexa
