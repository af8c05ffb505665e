// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXFragmentList.h"

#include "xml/MXFragment.h"

#include <utility>

namespace vexa {

MXFragmentList::MXFragmentList(MXFragmentList&& other) noexcept
    : BList(std::move(other)), owning(other.owning) {}

MXFragmentList& MXFragmentList::operator=(MXFragmentList&& other) noexcept {
    BList::operator=(std::move(other));
    std::swap(owning, other.owning);
    return *this;
}

MXFragmentList MXFragmentList::Borrowing() {
    MXFragmentList list;
    list.owning = false;
    return list;
}

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
    MXFragmentList found = Borrowing();
    for (int32 i = 0; i < CountItems(); i++)
        ItemAt(i)->CollectInto(found, mask, name);
    return found;
}

/// Frees from the last leaf on, going down and up instead of recursing, and without allocating: the
/// entry through which it went down holds the way back up.
void MXFragmentList::MakeEmpty() {
    MXFragmentList* list = this;
    /// The fragment whose children `list` is, and the one above it; null for this list.
    MXFragment* fragment = nullptr;
    MXFragment* above = nullptr;
    while (owning) {
        const int32 last = list->CountItems() - 1;
        if (last >= 0) {
            MXFragment* child = list->RemoveItem(last);
            if (child && !child->children.IsEmpty()) {
                // Into the place that just became free, so this cannot fail.
                list->AddItem(above);
                above = fragment;
                fragment = child;
                list = &child->children;
            } else {
                delete child;
            }
        } else if (fragment) {
            MXFragment* done = fragment;
            fragment = above;
            list = fragment ? &fragment->children : this;
            above = list->RemoveItem(list->CountItems() - 1);
            delete done;
        } else {
            break;
        }
    }
    BList::MakeEmpty();
}

} // namespace vexa
