// SPDX-License-Identifier: GPL-3.0-or-later
// Fragments in order: the children of one, or what a search found.
#pragma once

#include "kits/support/List.h"
#include "xml/MXString.h"

namespace vexa {

class MXFragment;

/// Owns nothing: children belong to the fragment above them.
class MXFragmentList : public BList {
  public:
    /// The fragments' texts one after the other, in their compact or their indented form.
    MXString AssembleString() const;
    MXString AssembleString(MXString indent, MXString unit) const;

    /// What MXFragment::FindFragment finds in each entry, in order.
    MXFragmentList FindFragment(long mask, MXString name) const;

    MXFragment* ItemAt(int32 index) const { return static_cast<MXFragment*>(BList::ItemAt(index)); }
    MXFragment* RemoveItem(int32 index) {
        return static_cast<MXFragment*>(BList::RemoveItem(index));
    }
};

} // namespace vexa
