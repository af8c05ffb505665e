// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXAttribute.h"

namespace vexa {

MXString MXAttribute::AssembleString() const {
    MXString text;
    AppendTo(text);
    return text;
}

void MXAttribute::AppendTo(MXString& text) const {
    text.Append(name).Append("=\"").Append(value).Append("\"");
}

} // namespace vexa
