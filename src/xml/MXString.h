// SPDX-License-Identifier: GPL-3.0-or-later
// The string that documents are read from and written to, with the operations of their parsers.
#pragma once

#include "kits/support/String.h"

namespace vexa {

/// Returns whether XML allows the byte in a name; all bytes of characters beyond ASCII count as
/// allowed.
bool IsNameByte(char byte);
/// Returns whether other readers of XML take the text for a name too. The parsers here ask less.
bool IsName(std::string_view text);

/// Holds a text of which the parsers take away what they recognise, piece by piece from its front.
/// Blanks are the bytes space, tab, line feed and carriage return; no other byte is one.
class MXString : public BString {
  public:
    using BString::BString;
    MXString() = default;

    /// Takes away and returns what stands before the first `separator`; everything if there is
    /// none. The separator stays.
    MXString SplitOffAtFirst(MXString separator);
    /// Takes away what stands before the first `separator`, and the separator too; everything if
    /// there is none.
    void RemovePastFirst(const char* separator);
    /// Takes away and returns the bytes before the first that ends a name: a blank, one of / ? " $
    /// # ; [ or the pair %%. Everything if there is none.
    MXString SplitOffAtFirstNonNameChar();

    /// Returns whether "<" is the first byte that is not blank.
    bool BeginsWithLt() const;
    bool BeginsWith(std::string_view text) const {
        return std::string_view(*this).starts_with(text);
    }

    /// Takes the blanks away from the front, or from the end.
    MXString& RemoveLeadingSpace();
    MXString& RemoveTrailingSpace();
    /// Makes "<" and "&" of the references &lt; and &amp;, the only ones that are known.
    MXString& ResolveLtAmpRef();
    /// Makes these references of all "<" and "&".
    MXString& MakeLtAmpRef();
};

} // namespace vexa
