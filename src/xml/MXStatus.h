// SPDX-License-Identifier: GPL-3.0-or-later
// The numbers that the parsers of documents return, and what they mean in words.
#pragma once

#include "kits/support/SupportDefs.h"

namespace vexa {

enum : int32 {
    MX_OK = 0,
    /// A document whose doctype cannot be read, or a file that cannot be written.
    MX_BAD_DOCUMENT = -1,
    MX_END_TAG = -2,
    MX_BAD_ATTRIBUTE = -3,
    MX_OPEN_INSTRUCTION = -4,
    MX_OPEN_COMMENT = -5,
    MX_OPEN_CDATA = -6,
    MX_OPEN_TAG = -7,
    /// "<!" of neither a comment nor a CDATA section.
    MX_DECLARATION = -8,
    MX_NOTHING = -9,
    MX_NO_DOCTYPE = -10,
    MX_BAD_DOCTYPE = -11,
};

/// Returns what the status means in words, for a message that names the file before it.
const char* StatusText(int32 status);

} // namespace vexa
