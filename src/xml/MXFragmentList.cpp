// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXFragmentList.h"

#include "xml/MXFragment.h"

namespace vexa {

MXString MXFragmentList::AssembleString() const {
    MXString text;
    for (const MXFragment* fragment : fragments)
        fragment->AppendTo(text);
    return text;
}

MXString MXFragmentList::AssembleString(MXString indent, MXString unit) const {
    MXString text;
    for (const MXFragment* fragment : fragments)
        fragment->AppendTo(text, indent, unit);
    return text;
}

MXFragmentList MXFragmentList::FindFragment(long mask, MXString name) const {
    MXFragmentList found;
    for (MXFragment* fragment : fragments)
        fragment->CollectInto(found, mask, name);
    return found;
}

} // namespace vexa
