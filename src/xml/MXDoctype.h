// SPDX-License-Identifier: GPL-3.0-or-later
// The document type declaration of a document.
#pragma once

#include "xml/MXString.h"

namespace vexa {

/// Holds the three parts of a declaration exactly as in the document.
class MXDoctype {
  public:
    MXDoctype() = default;
    MXDoctype(MXString name, MXString keyword, MXString literal)
        : name(std::move(name)), keyword(std::move(keyword)), literal(std::move(literal)) {}

    /// Reads one declaration and removes it from the front of the text. Returns MX_OK,
    /// MX_NO_DOCTYPE (only blanks were removed) or MX_BAD_DOCTYPE (`name` and `keyword` were read).
    int32 ParseString(MXString& text);
    /// Returns the declaration on one line, without a line feed.
    MXString AssembleString() const;

    /// The name of the document's root element.
    MXString name;
    /// A word such as "SYSTEM"; empty if the declaration has an internal subset instead.
    MXString keyword;
    /// The text between the first and the last double quote if there is a keyword, else the
    /// internal subset.
    MXString literal;
};

} // namespace vexa
