// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXAttributeList.h"

#include "kits/support/Quoted.h"
#include "xml/MXStatus.h"

namespace vexa {

int32 MXAttributeList::ParseString(MXString& text, std::size_t behind, Remarks* remarks) {
    std::size_t left = 0;
    const auto expected = [&](const std::string& what) {
        if (remarks)
            remarks->Add(left, "expected " + what);
        return MX_BAD_ATTRIBUTE;
    };
    MakeEmpty();
    text.RemoveLeadingSpace();
    while (text.Length() > 0) {
        left = behind + static_cast<std::size_t>(text.Length());
        MXString name = text.SplitOffAtFirst("=");
        if (text.Length() == 0)
            return expected("NAME=\"VALUE\", found " + kits::Quoted(name));
        if (remarks && !IsName(name))
            expected("the name of an attribute right before \"=\", found " + kits::Quoted(name));
        text.Remove(0, 1);
        text.RemoveLeadingSpace();
        left = behind + static_cast<std::size_t>(text.Length());
        if (text[0] != '"')
            return expected("a double quote, found " + kits::Quoted(text));
        text.Remove(0, 1);
        MXString value = text.SplitOffAtFirst("\"");
        if (text[0] != '"')
            return expected("another double quote before \">\"");
        text.Remove(0, 1);
        text.RemoveLeadingSpace();
        attributes.emplace_back(std::move(name), std::move(value));
    }
    return MX_OK;
}

MXString MXAttributeList::AssembleString() const {
    MXString text;
    AppendTo(text);
    return text;
}

void MXAttributeList::AppendTo(MXString& text) const {
    for (const MXAttribute& attribute : attributes) {
        text.Append(" ");
        attribute.AppendTo(text);
    }
}

MXString MXAttributeList::GetValue(MXString name) const {
    for (const MXAttribute& attribute : attributes) {
        if (attribute.name == name)
            return attribute.value;
    }
    return {};
}

} // namespace vexa
