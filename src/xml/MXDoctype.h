// SPDX-License-Identifier: GPL-3.0-or-later
// The document type declaration of a document.
#pragma once

#include "xml/MXString.h"

namespace vexa {

class MXDoctype {
  public:
    MXDoctype() = default;
    MXDoctype(MXString name, MXString keyword, MXString literal)
        : name(std::move(name)), keyword(std::move(keyword)), literal(std::move(literal)) {}

    /// Takes one declaration from the front of the text. MX_OK, MX_NO_DOCTYPE (only blanks were
    /// taken) or MX_BAD_DOCTYPE (name and keyword hold what was read).
    int32 ParseString(MXString& text);
    MXString AssembleString() const;

    /// The root element.
    MXString name;
    /// "SYSTEM" or the like; empty if the declaration has an internal subset instead.
    MXString keyword;
    /// With a keyword what stands between the first and the last double quote, else the subset.
    MXString literal;
};

} // namespace vexa
