// SPDX-License-Identifier: GPL-3.0-or-later
// The fragments that a search has found, in order.
#pragma once

#include "xml/MXString.h"

#include <vector>

namespace vexa {

class MXFragment;

/// The list does not own the fragments: they remain in the tree and must outlive the list. Any
/// thread, one at a time.
class MXFragmentList {
  public:
    /// Return the concatenated texts of the fragments in their compact or indented form.
    MXString AssembleString() const;
    MXString AssembleString(MXString indent, MXString unit) const;

    /// Returns the results of MXFragment::FindFragment for all entries, in order.
    MXFragmentList FindFragment(long mask, MXString name) const;

    void Add(MXFragment& fragment) { fragments.push_back(&fragment); }
    int32 CountItems() const { return static_cast<int32>(fragments.size()); }
    /// Returns the entry at an index, or null if the index is out of range.
    MXFragment* ItemAt(int32 index) const {
        return index >= 0 && index < CountItems() ? fragments[static_cast<std::size_t>(index)]
                                                  : nullptr;
    }

  private:
    std::vector<MXFragment*> fragments;
};

} // namespace vexa
