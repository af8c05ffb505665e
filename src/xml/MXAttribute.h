// SPDX-License-Identifier: GPL-3.0-or-later
// A name and a value inside a tag.
#pragma once

#include "xml/MXString.h"

namespace vexa {

/// Holds name and value exactly as in the document. Nothing is escaped or resolved, so a value that
/// contains a double quote cannot be read back.
class MXAttribute {
  public:
    MXAttribute() = default;
    MXAttribute(MXString name, MXString value) : name(std::move(name)), value(std::move(value)) {}

    /// Returns NAME="VALUE".
    MXString AssembleString() const;
    /// Appends the text that AssembleString returns.
    void AppendTo(MXString& text) const;

    MXString name;
    MXString value;
};

} // namespace vexa
