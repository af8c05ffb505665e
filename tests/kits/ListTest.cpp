// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/List.h"

#include <vector>

#include <gtest/gtest.h>

namespace {

TEST(BList, KeepsTheOrderThroughAllItsSizes) {
    std::vector<int> things(1000);
    BList list;
    for (int i = 0; i < 1000; i++) {
        // The odd ones in order at the end, the even ones in order at the front.
        ASSERT_TRUE(i % 2 ? list.AddItem(&things[i]) : list.AddItem(&things[i], i / 2));
    }
    ASSERT_EQ(list.CountItems(), 1000);
    for (int i = 0; i < 500; i++) {
        EXPECT_EQ(list.ItemAt(i), &things[2 * i]);
        EXPECT_EQ(list.ItemAt(500 + i), &things[2 * i + 1]);
    }
    EXPECT_EQ(list.RemoveItem(499), &things[998]);
    EXPECT_EQ(list.ItemAt(499), &things[1]);
    list.MakeEmpty();
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.ItemAt(0), nullptr);
}

} // namespace
