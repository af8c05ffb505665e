// SPDX-License-Identifier: GPL-3.0-or-later
// Fragments in order, as a search found them.
#pragma once

#include "xml/MXString.h"

#include <vector>

namespace vexa {

class MXFragment;

/// The list owns nothing: the fragments stay in the tree, and must outlive the list. Any thread,
/// one at a time.
class MXFragmentList {
  public:
    /// Returns the fragments' texts one after the other, in their compact or their indented form.
    MXString AssembleString() const;
    MXString AssembleString(MXString indent, MXString unit) const;

    /// Returns what MXFragment::FindFragment finds in each entry, in order.
    MXFragmentList FindFragment(long mask, MXString name) const;

    void Add(MXFragment& fragment) { fragments.push_back(&fragment); }
    int32 CountItems() const { return static_cast<int32>(fragments.size()); }
    /// Returns the entry at an index, or null past either end.
    MXFragment* ItemAt(int32 index) const {
        return index >= 0 && index < CountItems() ? fragments[static_cast<std::size_t>(index)]
                                                  : nullptr;
    }

  private:
    std::vector<MXFragment*> fragments;
};

} // namespace vexa
