// SPDX-License-Identifier: GPL-3.0-or-later
// The attributes of one tag.
#pragma once

#include "xml/MXAttribute.h"
#include "xml/Remarks.h"

#include <vector>

namespace vexa {

/// Holds attributes in document order; a name may occur several times. Any thread, one at a time.
class MXAttributeList {
  public:
    /// Replaces the entries by those read from the text, and consumes the text. Returns MX_OK, or
    /// MX_BAD_ATTRIBUTE; the list then has the attributes before the fault.
    int32 ParseString(MXString& text) { return ParseString(text, 0, nullptr); }
    /// Does the same for a text that is followed by `behind` bytes in the document, from which the
    /// places of remarks are computed. The fault and each invalid name add a remark to `remarks`,
    /// unless it is null.
    int32 ParseString(MXString& text, std::size_t behind, Remarks* remarks);

    /// Returns each attribute with a space before it.
    MXString AssembleString() const;
    /// Appends the text that AssembleString returns.
    void AppendTo(MXString& text) const;

    /// Returns the value of the first attribute with that name, or "" if there is none.
    MXString GetValue(MXString name) const;

    const std::vector<MXAttribute>& All() const { return attributes; }
    int32 CountItems() const { return static_cast<int32>(attributes.size()); }
    void MakeEmpty() { attributes.clear(); }

  private:
    std::vector<MXAttribute> attributes;
};

} // namespace vexa
