// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXString.h"

#include <algorithm>

namespace vexa {

namespace {

constexpr bool IsBlank(char byte) {
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

/// Returns the number of blanks at the front of the text.
std::size_t LeadingBlanks(std::string_view text) {
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsBlank) -
                                    text.begin());
}

/// The bytes that end a name, "%" only as the first of a pair.
constexpr std::string_view kNameSeparators = " \t\n\r/?\"$#;[%";

} // namespace

bool IsNameByte(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
           (byte >= '0' && byte <= '9') || byte == '_' || byte == ':' || byte == '-' ||
           byte == '.' || static_cast<unsigned char>(byte) >= 0x80;
}

bool IsName(std::string_view text) {
    constexpr std::string_view kNeverFirst = "-.0123456789";
    return !text.empty() && kNeverFirst.find(text.front()) == text.npos &&
           std::all_of(text.begin(), text.end(), IsNameByte);
}

MXString MXString::SplitOffAtFirst(MXString separator) {
    const int64 position = FindFirst(separator);
    MXString piece;
    MoveInto(piece, 0, position < 0 ? Length() : position);
    return piece;
}

void MXString::RemovePastFirst(const char* separator) {
    const int64 position = FindFirst(separator);
    const auto width = static_cast<int64>(std::string_view(separator).size());
    Remove(0, position < 0 ? Length() : position + width);
}

MXString MXString::SplitOffAtFirstNonNameChar() {
    const std::string_view text = *this;
    std::size_t end = text.find_first_of(kNameSeparators);
    while (end != text.npos && text[end] == '%' && !text.substr(end).starts_with("%%"))
        end = text.find_first_of(kNameSeparators, end + 1);
    MXString piece;
    MoveInto(piece, 0, end == text.npos ? Length() : static_cast<int64>(end));
    return piece;
}

bool MXString::BeginsWithLt() const {
    const std::string_view text = *this;
    return text.substr(LeadingBlanks(text)).starts_with('<');
}

MXString& MXString::RemoveLeadingSpace() {
    Remove(0, static_cast<int64>(LeadingBlanks(*this)));
    return *this;
}

MXString& MXString::RemoveTrailingSpace() {
    const std::string_view text = *this;
    const auto blanks = std::find_if_not(text.rbegin(), text.rend(), IsBlank) - text.rbegin();
    Remove(Length() - blanks, blanks);
    return *this;
}

MXString& MXString::ResolveLtAmpRef() {
    ReplaceAll("&lt;", "<");
    // This comes last, so that "&amp;lt;" becomes "&lt;".
    ReplaceAll("&amp;", "&");
    return *this;
}

MXString& MXString::MakeLtAmpRef() {
    ReplaceAll("&", "&amp;");
    ReplaceAll("<", "&lt;");
    return *this;
}

} // namespace vexa
