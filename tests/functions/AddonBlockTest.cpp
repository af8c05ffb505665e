// SPDX-License-Identifier: GPL-3.0-or-later
// Catches differences between the block form and the point form of a compiled add-on.
#include "functions/ProgramFolder.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

/// Returns the number of floats between two numbers; two NaNs count as equal.
long Distance(float a, float b) {
    if (std::isnan(a) || std::isnan(b))
        return std::isnan(a) && std::isnan(b) ? 0 : 1000000;
    const auto place = [](float value) {
        std::int32_t bits;
        std::memcpy(&bits, &value, sizeof bits);
        return bits < 0 ? -long(bits & 0x7fffffff) : long(bits);
    };
    return std::labs(place(a) - place(b));
}

TEST(AddonBlock, IsThePointFormWithinFourLastDigits) {
    std::vector<float> x;
    std::vector<float> y;
    for (int i = -60; i <= 60; i++) {
        for (int k = -60; k <= 60; k++) {
            x.push_back(0.0837F * float(i));
            y.push_back(0.0791F * float(k));
        }
    }
    std::vector<std::string> expressions{"sqrt(x)", "x>y ? sin(x)*y : (x<-1 ? x*x : y-x)",
                                         "signbit(x)", "isnan(x/y)+isless(x,y)"};
    for (const std::string name :
         {"acos",  "acosh", "asin", "asinh", "atan", "atanh", "cbrt", "cos",
          "cosh",  "erf",   "erfc", "exp",   "exp2", "expm1", "log",  "log10",
          "log1p", "log2",  "sin",  "sinh",  "tan",  "tanh"})
        expressions.insert(expressions.end(), {name + "(x)", name + "f(x)"});
    for (const std::string name : {"atan2", "hypot", "pow"})
        expressions.insert(expressions.end(), {name + "(x,y)", name + "f(x,y)"});
    const test::ProgramFolder folder;
    const vexa::FunctionCompiler compiler(folder.Path());
    for (const std::string& expression : expressions) {
        const auto outcome = compiler.Compile(expression);
        ASSERT_TRUE(outcome) << outcome.text;
        ASSERT_TRUE(outcome.addon->HasBlockForm());
        const vexa::PlaneFunction f = outcome.addon;
        std::vector<float> values(x.size());
        f.Evaluate(x.data(), y.data(), values.data(), x.size());
        long worst = 0;
        for (std::size_t i = 0; i < x.size(); i++)
            worst = std::max(worst, Distance(values[i], f(x[i], y[i])));
        EXPECT_LE(worst, 4) << expression;
    }
}

} // namespace
