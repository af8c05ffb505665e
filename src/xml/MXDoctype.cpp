// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXDoctype.h"

#include "xml/MXStatus.h"

namespace vexa {

namespace {

constexpr std::string_view kOpening = "<!DOCTYPE";

} // namespace

int32 MXDoctype::ParseString(MXString& text) {
    text.RemoveLeadingSpace();
    if (!text.BeginsWith(kOpening))
        return MX_NO_DOCTYPE;
    // The blank that follows is removed too.
    text.Remove(0, static_cast<int64>(kOpening.size()) + 1);
    name = text.RemoveLeadingSpace().SplitOffAtFirstNonNameChar();
    keyword = text.RemoveLeadingSpace().SplitOffAtFirstNonNameChar();
    text.RemoveLeadingSpace();
    if (text[0] != (keyword.Length() == 0 ? '[' : '"'))
        return MX_BAD_DOCTYPE;
    text.Remove(0, 1);
    if (keyword.Length() == 0) {
        literal = text.SplitOffAtFirst("]");
        text.Remove(0, 1);
        text.RemovePastFirst(">");
    } else {
        literal = text.SplitOffAtFirst(">");
        text.Remove(0, 1);
        literal.RemoveTrailingSpace();
        literal.Remove(literal.Length() - 1, 1);
    }
    return MX_OK;
}

MXString MXDoctype::AssembleString() const {
    MXString text("<!DOCTYPE ");
    text.Append(name).Append(" ");
    if (keyword.Length() == 0)
        text.Append("[").Append(literal).Append("]");
    else
        text.Append(keyword).Append(" \"").Append(literal).Append("\"");
    text.Append(">");
    return text;
}

} // namespace vexa
