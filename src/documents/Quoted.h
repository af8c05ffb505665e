// Texts from a document inside of messages.
#pragma once

#include <string>
#include <string_view>

namespace vexa {

/// The text in double quotes, fit for one line of a terminal: shortened to 60 bytes, and "?" for
/// each control character.
std::string Quoted(std::string_view text);

} // namespace vexa
