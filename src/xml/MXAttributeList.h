// SPDX-License-Identifier: GPL-3.0-or-later
// The attributes of one tag.
#pragma once

#include "kits/support/List.h"
#include "xml/MXAttribute.h"
#include "xml/Remarks.h"

namespace vexa {

/// Attributes in the order of the document; a name may occur again. Owns its entries.
class MXAttributeList : public BList {
  public:
    MXAttributeList() = default;
    MXAttributeList(MXAttributeList&&) noexcept = default;
    MXAttributeList& operator=(MXAttributeList&&) noexcept = default;
    ~MXAttributeList() override { MakeEmpty(); }

    /// Replaces the entries by those read from the whole text, which is used up. MX_OK or
    /// MX_BAD_ATTRIBUTE; what stood before the fault stays in the list.
    int32 ParseString(MXString& text) { return ParseString(text, 0, nullptr); }
    /// The same for a text with `behind` bytes behind it. What is no attribute, and a name that is
    /// none, is told to `remarks` where there are any.
    int32 ParseString(MXString& text, std::size_t behind, Remarks* remarks);

    /// Each attribute with a space before it.
    MXString AssembleString() const;
    /// The same, appended to `text`.
    void AppendTo(MXString& text) const;

    /// The value of the first attribute of that name, "" if there is none.
    MXString GetValue(MXString name) const;

    MXAttribute* ItemAt(int32 index) const {
        return static_cast<MXAttribute*>(BList::ItemAt(index));
    }
    void MakeEmpty();
};

} // namespace vexa
