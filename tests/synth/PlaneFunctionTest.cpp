// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/PlaneFunction.h"

#include "synth/ParameterTable.h"

#include <cmath>
#include <cstdlib>
#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(PlaneFunction, TheBuiltInOnes) {
    EXPECT_EQ(vexa::nullfunc(3, 4), 0);
    EXPECT_EQ(vexa::dummyfunction(0, 0), 0);
    EXPECT_FLOAT_EQ(vexa::dummyfunction(0, 1), 0.675F);
    EXPECT_FLOAT_EQ(vexa::dummyfunction(1, 0), -0.675F);
    float highest = 0;
    for (float x = -3; x < 3; x += 0.05F) {
        for (float y = -3; y < 3; y += 0.05F)
            highest = std::max(highest, std::abs(vexa::dummyfunction(x, y)));
    }
    EXPECT_LE(highest, 1);
    EXPECT_TRUE(std::isnan(vexa::dummyfunction(NAN, 0)));
}

TEST(ParameterTable, EveryRowHasOneTargetThatItsInitialTextDescribes) {
    const vexa::sound_param initial;
    std::set<std::string_view> fields;
    std::set<uint32> codes;
    for (const vexa::Parameter& row : vexa::Parameters()) {
        SCOPED_TRACE(row.field);
        fields.insert(row.field);
        codes.insert(row.code);
        ASSERT_NE(row.value == nullptr, row.controller == nullptr);
        const double value = row.value ? float(initial.*row.value) : int32(initial.*row.controller);
        EXPECT_EQ(value, std::atof(std::string(row.initialText).c_str()));
    }
    EXPECT_EQ(fields.size(), 32U);
    EXPECT_EQ(codes.size(), 32U);
    EXPECT_EQ(vexa::ParametersOf("cy0").front().field, "C0y0");
    EXPECT_EQ(vexa::ParametersOf("cy0").size(), 5U);
    EXPECT_EQ(vexa::ParametersOf("fy").size(), 1U);
    EXPECT_TRUE(vexa::ParametersOf("none").empty());
}

} // namespace
