// SPDX-License-Identifier: GPL-3.0-or-later
// An ordered list of pointers.
#pragma once

#include "kits/support/SupportDefs.h"

/// Holds pointers and does not own what they point to. Any thread, one at a time.
class BList {
  public:
    /// The storage begins with one entry and doubles up to `itemsPerBlock` entries, from where it
    /// grows by half: a short list costs little, and a long one constant time per added entry.
    explicit BList(int32 itemsPerBlock = 20);
    BList(BList&& other) noexcept;
    BList& operator=(BList&& other) noexcept;
    virtual ~BList();

    /// Adds an item at the end, or before the entry at `index` (0..CountItems()). Returns false,
    /// and changes nothing, if there is no memory or no such place.
    bool AddItem(void* item);
    bool AddItem(void* item, int32 index);
    /// Takes the entry out and returns it; null if there is none.
    void* RemoveItem(int32 index);
    void MakeEmpty();

    /// Returns the entry at an index, or null past either end.
    void* ItemAt(int32 index) const { return index >= 0 && index < count ? items[index] : nullptr; }
    int32 CountItems() const { return count; }
    bool IsEmpty() const { return count == 0; }

  private:
    bool Grow();

    void** items = nullptr;
    int32 count = 0;
    int32 capacity = 0;
    int32 itemsPerBlock;
};
