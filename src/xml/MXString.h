// SPDX-License-Identifier: GPL-3.0-or-later
// The string that documents are read from and written to, with the operations of their parsers.
#pragma once

#include "kits/support/String.h"

namespace vexa {

/// Returns whether XML allows the byte in a name; each byte of a character beyond ASCII counts as
/// allowed.
bool IsNameByte(char byte);
/// Returns whether the text is a name that other XML readers accept too. The parsers here accept
/// more.
bool IsName(std::string_view text);

/// Holds a text from whose front the parsers remove each piece that they have recognised. Blanks
/// are exactly the bytes space, tab, line feed and carriage return.
class MXString : public BString {
  public:
    using BString::BString;
    MXString() = default;

    /// Removes and returns the text before the first `separator`, or the whole text if there is
    /// none. The separator remains.
    MXString SplitOffAtFirst(MXString separator);
    /// Removes the text up to and including the first `separator`, or the whole text if there is
    /// none.
    void RemovePastFirst(const char* separator);
    /// Removes and returns the text before the first byte that ends a name: a blank, one of / ? " $
    /// # ; [ or the pair %%. Without such a byte it is the whole text.
    MXString SplitOffAtFirstNonNameChar();

    /// Returns whether the first byte that is not blank is "<".
    bool BeginsWithLt() const;
    bool BeginsWith(std::string_view text) const {
        return std::string_view(*this).starts_with(text);
    }

    /// Remove the blanks at the front, or at the end.
    MXString& RemoveLeadingSpace();
    MXString& RemoveTrailingSpace();
    /// Replaces the references &lt; and &amp;, the only known ones, by "<" and "&".
    MXString& ResolveLtAmpRef();
    /// Replaces all "<" and "&" by these references.
    MXString& MakeLtAmpRef();
};

} // namespace vexa
