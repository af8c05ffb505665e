// SPDX-License-Identifier: GPL-3.0-or-later
// Catches usual expressions that the check refuses, or that an add-on computes wrongly.

#include "support/HonestExpressions.h"

#include "formula/ExpressionWords.h"
#include "functions/ExpressionCheck.h"
#include "functions/ProgramFolder.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include <gtest/gtest.h>

namespace {

using test::kHonest;
using test::kX;
using test::kY;

TEST(HonestExpressions, AreAcceptedAndComputedRight) {
    // One add-on for all: r2rfun(i, 0) is the value of expression i.
    std::ostringstream source;
    source << "#include <math.h>\nstatic const float x = " << kX << ", y = " << kY
           << ";\nfloat r2rfun(float i, float unused) {\n    switch ((int)i) {\n";
    for (std::size_t i = 0; i < std::size(kHonest); i++) {
        const auto fault = vexa::CheckExpression(kHonest[i].expression);
        EXPECT_FALSE(fault) << kHonest[i].expression << ": " << fault->reason;
        source << "    case " << i << ": return " << kHonest[i].expression << ";\n";
    }
    source << "    }\n    return unused;\n}\nconst char* r2rfunstr(void) { return \"all\"; }\n";
    const test::ProgramFolder folder;
    std::ofstream(folder.Path() / "all.c") << source.str();
    const auto outcome =
        vexa::FunctionCompiler(folder.Path()).IncludeFunction(folder.Path() / "all.c");
    ASSERT_TRUE(outcome) << outcome.text;
    for (std::size_t i = 0; i < std::size(kHonest); i++) {
        const double value = outcome.addon->At(static_cast<float>(i), 0, nullptr);
        const double expected = kHonest[i].value;
        EXPECT_NEAR(value, expected, 2e-7 * std::max(1.0, std::abs(expected)))
            << kHonest[i].expression;
    }
}

/// The maths header declares every accepted name, with that number of arguments.
TEST(HonestExpressions, EveryNameOfTheTablesCompiles) {
    std::ostringstream sum;
    const auto add = [&sum](const std::string& name, const vexa::MathFunction& function) {
        sum << "+" << name << (function.order ? "(1" : "(x");
        for (int i = 1; i < function.arguments; i++)
            sum << ",y";
        sum << ")";
    };
    for (const vexa::MathFunction& function : vexa::MathFunctions()) {
        for (const char* ending : {"", "f", "l"})
            add(std::string(function.name) + ending, function);
    }
    for (const vexa::MathFunction& macro : vexa::MathMacros())
        add(std::string(macro.name), macro);
    for (const vexa::MathConstant& constant : vexa::MathConstants())
        sum << "+" << constant.name;
    const test::ProgramFolder folder;
    const auto outcome = vexa::FunctionCompiler(folder.Path()).Compile(sum.str());
    EXPECT_TRUE(outcome) << outcome.text;
    EXPECT_EQ(outcome.text.find("implicit declaration"), std::string::npos) << outcome.text;
}

} // namespace
