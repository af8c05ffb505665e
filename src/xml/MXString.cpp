#include "xml/MXString.h"

namespace vexa {

namespace {

constexpr std::string_view kBlanks = " \t\n\r";
/// The single bytes that end a name. "%" does so only in a pair.
constexpr std::string_view kNameSeparators = " \t\n\r/?\"$#;[%";

} // namespace

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
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first != text.npos && text[first] == '<';
}

MXString& MXString::RemoveLeadingSpace() {
    const std::size_t first = std::string_view(*this).find_first_not_of(kBlanks);
    Remove(0, first == std::string_view::npos ? Length() : static_cast<int64>(first));
    return *this;
}

MXString& MXString::RemoveTrailingSpace() {
    const std::size_t last = std::string_view(*this).find_last_not_of(kBlanks);
    const int64 kept = last == std::string_view::npos ? 0 : static_cast<int64>(last) + 1;
    Remove(kept, Length() - kept);
    return *this;
}

MXString& MXString::ResolveLtAmpRef() {
    ReplaceAll("&lt;", "<");
    // Last, so that "&amp;lt;" becomes "&lt;".
    ReplaceAll("&amp;", "&");
    return *this;
}

MXString& MXString::MakeLtAmpRef() {
    ReplaceAll("&", "&amp;");
    ReplaceAll("<", "&lt;");
    return *this;
}

} // namespace vexa
