// SPDX-License-Identifier: GPL-3.0-or-later
// The string that documents are read from and written to, with the operations of their parsers.
#pragma once

#include "kits/support/String.h"

namespace vexa {

/// Whether XML allows the byte in a name; all bytes of characters beyond ASCII count as such.
bool IsNameByte(char byte);
/// Whether the text is what others take for a name too. The parsers ask less of a name.
bool IsName(std::string_view text);

/// A text of which the parsers take away what they recognise, piece by piece from its front. Blanks
/// are the bytes space, tab, line feed and carriage return; no other byte is one.
class MXString : public BString {
  public:
    using BString::BString;
    MXString() = default;

    /// Takes away and returns what stands before the first `separator`; everything if there is
    /// none. The separator stays.
    MXString SplitOffAtFirst(MXString separator);
    /// The same without returning it, and the separator is taken away too.
    void RemovePastFirst(const char* separator);
    /// Takes away and returns the bytes before the first that ends a name: a blank, one of / ? " $
    /// # ; [ or the pair %%. Everything if there is none.
    MXString SplitOffAtFirstNonNameChar();

    /// Whether "<" is the first byte that is not blank.
    bool BeginsWithLt() const;
    bool BeginsWith(std::string_view text) const {
        return std::string_view(*this).starts_with(text);
    }

    MXString& RemoveLeadingSpace();
    MXString& RemoveTrailingSpace();
    /// Makes "<" and "&" of the references &lt; and &amp;, the only ones that are known.
    MXString& ResolveLtAmpRef();
    /// Its inverse.
    MXString& MakeLtAmpRef();
};

} // namespace vexa
