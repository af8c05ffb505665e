// SPDX-License-Identifier: GPL-3.0-or-later
// Catches wrong or missing messages about invalid formulas.

#include "formula/Formula.h"

#include <gtest/gtest.h>

namespace {

struct Faulty {
    std::string_view text;
    std::size_t position;
    /// Parts of the message.
    std::string_view reason, advice;
};

TEST(FormulaFault, TellsThePlaceTheReasonAndWhatMayBeMeant) {
    // clang-format off
    for (const auto& [text, position, reason, advice] : std::initializer_list<Faulty>{
             {"x^2", 1, "whole numbers only", "pow(x, 2)"},
             {"x**2", 2, "before \"*\"", "pow(x, 2)"}, {"x%2", 1, "whole numbers only", "fmod(x, 2)"},
             {"x<<2", 1, "whole numbers only", ""}, {"~x", 0, "whole numbers only", "write -"},
             {"2*pi", 2, "\"pi\"", "M_PI"}, {"PI*x", 0, "\"PI\"", "M_PI"}, {"abs(x)", 0, "\"abs\"", "fabs(x)"},
             {"1+min(x, y)", 2, "\"min\"", "fmin(x, y)"}, {"max(x,y)", 0, "\"max\"", "fmax(x, y)"},
             {"mod(x,2)", 0, "\"mod\"", "fmod"}, {"ln(x)", 0, "\"ln\"", "log(x)"},
             {"2x", 0, "not a number", "2*x"}, {"x+2.5sin(x)", 2, "not a number", "2.5*sin"},
             {"2 x", 2, "an operator is expected", "2*x"}, {"x y", 2, "an operator", "x*y"},
             {"2(x+1)", 1, "an operator is expected", "write *"},
             {"(x)(y)", 3, "an operator is expected", "write *"}, {"xy", 0, "\"xy\"", "x*y"},
             {"sin x", 0, "arguments of sin are missing", "sin(x)"},
             {"1+sin", 2, "arguments of sin", "sin(x)"},
             {"1,5*x", 1, "\",\"", "1.5"}, {"sin(0,5)", 5, "\",\"", "0.5"},
             {"(x, y)", 2, "\")\" is expected", "comma only separates"},
             {"pow(x)", 5, "\",\" is expected", ""},
             {"(x+(y*2)", 8, "before the end", "character 1"}, {"sin(x", 5, "the end", "character 4"},
             {"x+1)", 3, "before \")\"", "no ( is open"},
             {"|x|", 0, "before \"|\"", "fabs(x)"}, {"x=1", 1, "assigned", "=="},
             {"sine(x)", 0, "\"sine\"", "mean sin"}, {"coss(x)", 0, "\"coss\"", "mean cos"},
             {"sqrt2(x)", 0, "\"sqrt2\"", "mean sqrt"}, {"M_Pi", 0, "\"M_Pi\"", "mean M_PI"},
             {"Sin(x)", 0, "\"Sin\"", "mean sin"}, {"tahn(x)", 0, "\"tahn\"", "mean tanh"},
             {"qwertz(x)", 0, "\"qwertz\"", ""}, {"x\xc2\xb2", 1, "ASCII", "x*x"},
             {"2\xcf\x80", 1, "ASCII", "M_PI"}, {"[x]", 0, "brackets", "write ("},
             {"", 0, "before the end", ""}, {"x+", 2, "before the end", ""},
             {"jn(y, x)", 3, "the order of jn", ""}, {"ctl(128)", 4, "from 0 to 127", ""},
             {"ctl(x)", 4, "from 0 to 127", ""}, {"ctl", 0, "arguments of ctl", "ctl(1)"},
             {"x\n", 1, "one line", ""}, {"(long float)x", 1, "not an arithmetic type", ""},
             {"0xffffffffffffffffff", 0, "larger than 64 bits", ""},
             {"ctl(0)+ctl(1)+ctl(2)+ctl(3)+ctl(4)+ctl(5)+ctl(6)+ctl(7)+ctl(8)+a+b+c+d+vel+key+t+"
              "ctl(10)", 81, "16 different", ""},
         }) {
        const vexa::FormulaOutcome outcome = vexa::CompileFormula(text);
        ASSERT_FALSE(outcome) << text;
        const vexa::ExpressionFault& fault = outcome.fault;
        EXPECT_EQ(fault.position, position) << text << "\n" << fault.reason;
        EXPECT_NE(fault.reason.find(reason), std::string::npos) << text << "\n" << fault.reason;
        EXPECT_NE(fault.advice.find(advice), std::string::npos) << text << "\n" << fault.advice;
        EXPECT_EQ(advice.empty(), fault.advice.empty()) << text << "\n" << fault.advice;
    }
    // clang-format on
}

} // namespace
