// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/List.h"

#include <limits>
#include <new>

bool BList::AddItem(void* item, int32 index) try {
    if (index < 0 || index > CountItems() || CountItems() == std::numeric_limits<int32>::max())
        return false;
    items.insert(items.begin() + index, item);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

void* BList::RemoveItem(int32 index) {
    void* const item = ItemAt(index);
    if (index >= 0 && index < CountItems())
        items.erase(items.begin() + index);
    return item;
}
