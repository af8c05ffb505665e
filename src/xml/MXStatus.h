// SPDX-License-Identifier: GPL-3.0-or-later
// The status codes that the parsers of documents return, and their texts.
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
    /// A "<!" that begins neither a comment nor a CDATA section.
    MX_DECLARATION = -8,
    MX_NOTHING = -9,
    MX_NO_DOCTYPE = -10,
    MX_BAD_DOCTYPE = -11,
};

/// Returns a text for the status, for a message that begins with the name of the file.
const char* StatusText(int32 status);

} // namespace vexa
