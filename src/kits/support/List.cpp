// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/List.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

BList::BList(int32 itemsPerBlock) : itemsPerBlock(std::max<int32>(itemsPerBlock, 1)) {}

BList::BList(BList&& other) noexcept : BList(other.itemsPerBlock) {
    *this = std::move(other);
}

BList& BList::operator=(BList&& other) noexcept {
    std::swap(items, other.items);
    std::swap(count, other.count);
    std::swap(capacity, other.capacity);
    std::swap(itemsPerBlock, other.itemsPerBlock);
    return *this;
}

BList::~BList() {
    std::free(items);
}

bool BList::AddItem(void* item) {
    return AddItem(item, count);
}

bool BList::AddItem(void* item, int32 index) {
    if (index < 0 || index > count || (count == capacity && !Grow()))
        return false;
    std::move_backward(items + index, items + count, items + count + 1);
    items[index] = item;
    count++;
    return true;
}

void* BList::RemoveItem(int32 index) {
    void* item = ItemAt(index);
    if (index >= 0 && index < count) {
        std::move(items + index + 1, items + count, items + index);
        count--;
    }
    return item;
}

void BList::MakeEmpty() {
    std::free(std::exchange(items, nullptr));
    count = capacity = 0;
}

bool BList::Grow() {
    int64 next = std::max<int64>(1, int64(capacity) * 2);
    if (next > itemsPerBlock)
        next = std::max<int64>(itemsPerBlock, int64(capacity) + capacity / 2 + 1);
    next = std::min<int64>(next, std::numeric_limits<int32>::max());
    if (next == capacity)
        return false;
    void* grown = std::realloc(items, static_cast<std::size_t>(next) * sizeof(void*));
    if (!grown)
        return false;
    items = static_cast<void**>(grown);
    capacity = static_cast<int32>(next);
    return true;
}
