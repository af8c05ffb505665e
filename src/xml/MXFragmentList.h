// SPDX-License-Identifier: GPL-3.0-or-later
// Fragments in order: the children of one, or what a search found.
#pragma once

#include "kits/support/List.h"
#include "xml/MXString.h"

namespace vexa {

class MXFragment;

/// Owns its entries and frees them with all that is below them, except for the lists that
/// FindFragment returns: these point into a tree and own nothing. Moving keeps that apart.
class MXFragmentList : public BList {
  public:
    MXFragmentList() = default;
    MXFragmentList(MXFragmentList&& other) noexcept;
    MXFragmentList& operator=(MXFragmentList&& other) noexcept;
    ~MXFragmentList() override { MakeEmpty(); }

    /// The fragments' texts one after the other, in their compact or their indented form.
    MXString AssembleString() const;
    MXString AssembleString(MXString indent, MXString unit) const;

    /// What MXFragment::FindFragment finds in each entry, in order.
    MXFragmentList FindFragment(long mask, MXString name) const;

    MXFragment* ItemAt(int32 index) const { return static_cast<MXFragment*>(BList::ItemAt(index)); }
    MXFragment* RemoveItem(int32 index) {
        return static_cast<MXFragment*>(BList::RemoveItem(index));
    }
    void MakeEmpty();

  private:
    friend class MXFragment;
    /// An empty list that owns nothing.
    static MXFragmentList Borrowing();

    bool owning = true;
};

} // namespace vexa
