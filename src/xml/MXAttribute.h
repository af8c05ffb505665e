// SPDX-License-Identifier: GPL-3.0-or-later
// A name and a value inside a tag.
#pragma once

#include "xml/MXString.h"

namespace vexa {

/// Holds both texts as they stand in the document: nothing in them is escaped or resolved, so a
/// value with a double quote in it cannot be read back.
class MXAttribute {
  public:
    MXAttribute() = default;
    MXAttribute(MXString name, MXString value) : name(std::move(name)), value(std::move(value)) {}

    /// Returns NAME="VALUE".
    MXString AssembleString() const;
    /// Appends what AssembleString returns.
    void AppendTo(MXString& text) const;

    MXString name;
    MXString value;
};

} // namespace vexa
