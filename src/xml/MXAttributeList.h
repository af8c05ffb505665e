// SPDX-License-Identifier: GPL-3.0-or-later
// The attributes of one tag.
#pragma once

#include "xml/MXAttribute.h"
#include "xml/Remarks.h"

#include <vector>

namespace vexa {

/// Holds attributes in the order of the document; a name may occur again. Any thread, one at a
/// time.
class MXAttributeList {
  public:
    /// Replaces the entries by those read from the whole text, which is used up. Returns MX_OK or
    /// MX_BAD_ATTRIBUTE; what stood before the fault stays in the list.
    int32 ParseString(MXString& text) { return ParseString(text, 0, nullptr); }
    /// Does the same for a text with `behind` bytes behind it. What is no attribute, and a name
    /// that is none, is told to `remarks` where there are any.
    int32 ParseString(MXString& text, std::size_t behind, Remarks* remarks);

    /// Returns each attribute with a space before it.
    MXString AssembleString() const;
    /// Appends what AssembleString returns.
    void AppendTo(MXString& text) const;

    /// Returns the value of the first attribute of that name, "" if there is none.
    MXString GetValue(MXString name) const;

    int32 CountItems() const { return static_cast<int32>(attributes.size()); }
    void MakeEmpty() { attributes.clear(); }

  private:
    std::vector<MXAttribute> attributes;
};

} // namespace vexa
