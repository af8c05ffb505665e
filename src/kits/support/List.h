// SPDX-License-Identifier: GPL-3.0-or-later
// An ordered list of pointers.
#pragma once

#include "kits/support/SupportDefs.h"

#include <vector>

/// Holds pointers and does not own what they point to. Adding at the end takes constant time. Any
/// thread, one at a time.
class BList {
  public:
    BList() = default;
    BList(BList&&) noexcept = default;
    BList& operator=(BList&&) noexcept = default;
    virtual ~BList() = default;

    /// Adds an item at the end, or before the entry at `index` (0..CountItems()). Returns false,
    /// and changes nothing, if there is no memory or no such place.
    bool AddItem(void* item) { return AddItem(item, CountItems()); }
    bool AddItem(void* item, int32 index);
    /// Takes the entry out and returns it; null if there is none. Its place stays allocated, so
    /// that adding another entry cannot fail.
    void* RemoveItem(int32 index);
    void MakeEmpty() { items.clear(); }

    /// Returns the entry at an index, or null past either end.
    void* ItemAt(int32 index) const {
        return index >= 0 && index < CountItems() ? items[static_cast<std::size_t>(index)]
                                                  : nullptr;
    }
    int32 CountItems() const { return static_cast<int32>(items.size()); }
    bool IsEmpty() const { return items.empty(); }

  private:
    std::vector<void*> items;
};
