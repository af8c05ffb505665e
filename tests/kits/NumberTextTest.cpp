// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/NumberText.h"

#include "support/DecimalComma.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace {

TEST(NumberText, ReadsAsStrtodAndWritesAsPrintf) {
    EXPECT_EQ(kits::NumberOf(" \n+0.5e1rest"), 5.0);
    EXPECT_EQ(kits::NumberOf("0x10"), 16.0);
    EXPECT_EQ(kits::NumberOf("x"), 0.0);
    EXPECT_TRUE(std::isnan(kits::NumberOf("nan")));
    EXPECT_EQ(kits::FixedText(1.0 / 3), "0.333333");
    EXPECT_EQ(kits::FixedText(-0.0), "-0.000000");
    EXPECT_EQ(kits::FixedText(-std::numeric_limits<double>::infinity()), "-inf");
    EXPECT_EQ(kits::FixedText(std::numeric_limits<double>::max()).size(), 309U + 7);
    EXPECT_EQ(kits::RoundedText(0.51234567891, 9), "0.512345679");
    EXPECT_EQ(kits::RoundedText(-1e-300 / 3, 17), "-3.3333333333333334e-301");
    EXPECT_EQ(kits::RoundedText(-0.00012345678901234567, 17), "-0.00012345678901234567");
}

TEST(NumberText, DoesNotFollowTheLocale) {
    const test::DecimalComma comma;
    EXPECT_EQ(kits::NumberOf("0.5"), 0.5);
    EXPECT_EQ(kits::NumberOf("0,5"), 0.0);
    EXPECT_EQ(kits::FixedText(0.5), "0.500000");
    EXPECT_EQ(kits::RoundedText(0.5, 3), "0.5");
}

} // namespace
