// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXStatus.h"

namespace vexa {

const char* StatusText(int32 status) {
    switch (status) {
    case MX_OK:
        return "no fault";
    case MX_BAD_DOCUMENT:
        return "a <!DOCTYPE> declaration that cannot be read";
    case MX_END_TAG:
        return "an end tag without a start tag";
    case MX_BAD_ATTRIBUTE:
        return "an attribute without \"=\" or without double quotes";
    case MX_OPEN_INSTRUCTION:
        return "a processing instruction without \"?>\"";
    case MX_OPEN_COMMENT:
        return "a comment without \"-->\"";
    case MX_OPEN_CDATA:
        return "a CDATA section without \"]]>\"";
    case MX_OPEN_TAG:
        return "a tag without \">\"";
    case MX_DECLARATION:
        return "a declaration where none may stand";
    case MX_NOTHING:
        return "nothing but blanks";
    case MX_NO_DOCTYPE:
        return "no <!DOCTYPE> declaration";
    case MX_BAD_DOCTYPE:
        return "a <!DOCTYPE> declaration with neither a quoted text nor \"[\"";
    default:
        return "an unknown fault";
    }
}

} // namespace vexa
