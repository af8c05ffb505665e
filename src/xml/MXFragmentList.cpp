// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXFragmentList.h"

#include "xml/MXFragment.h"

namespace vexa {

MXString MXFragmentList::AssembleString() const {
    MXString text;
    for (int32 i = 0; i < CountItems(); i++)
        ItemAt(i)->AppendTo(text);
    return text;
}

MXString MXFragmentList::AssembleString(MXString indent, MXString unit) const {
    MXString text;
    for (int32 i = 0; i < CountItems(); i++)
        ItemAt(i)->AppendTo(text, indent, unit);
    return text;
}

MXFragmentList MXFragmentList::FindFragment(long mask, MXString name) const {
    MXFragmentList found;
    for (int32 i = 0; i < CountItems(); i++)
        ItemAt(i)->CollectInto(found, mask, name);
    return found;
}

} // namespace vexa
