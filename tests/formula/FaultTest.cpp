// SPDX-License-Identifier: GPL-3.0-or-later
// Catches wrong or missing messages about invalid and doubtful formulas.

#include "formula/Formula.h"

#include <gtest/gtest.h>

namespace {

struct Faulty {
    std::string_view text;
    std::size_t position;
    /// Parts of the message.
    std::string_view reason, advice;
};

void Expect(const Faulty& row, const vexa::ExpressionFault& fault) {
    EXPECT_EQ(fault.position, row.position) << row.text << "\n" << fault.reason;
    EXPECT_NE(fault.reason.find(row.reason), std::string::npos) << row.text << "\n" << fault.reason;
    EXPECT_NE(fault.advice.find(row.advice), std::string::npos) << row.text << "\n" << fault.advice;
    EXPECT_EQ(row.advice.empty(), fault.advice.empty()) << row.text << "\n" << fault.advice;
}

TEST(FormulaFault, TellsThePlaceTheReasonAndWhatMayBeMeant) {
    // clang-format off
    for (const Faulty& row : std::initializer_list<Faulty>{
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
        const vexa::FormulaOutcome outcome = vexa::CompileFormula(row.text);
        EXPECT_FALSE(outcome) << row.text;
        Expect(row, outcome.fault);
    }
    // Formulas, but not what was meant.
    for (const Faulty& row : std::initializer_list<Faulty>{
             {"1/3*x", 1, "1/3 is 0, because", "write 1.0/3"}, {"-7/2*x+1/3", 2, "-7/2 is -3,", "-7.0/2"},
             {"x+(1+2)/4u", 7, "3/4 is 0,", "3.0/4"}, {"1/-3L", 1, "1/-3 is 0,", "1.0/-3"},
             {"4294967295u/2", 11, "/2 is 2147483647", "4294967295.0/2"},
             {"x*1/3+1.0/3+6/3+1/(int)x+(-2147483647-1)/-1", 0, "", ""},
         }) {
        const vexa::FormulaOutcome outcome = vexa::CompileFormula(row.text);
        EXPECT_TRUE(outcome) << row.text;
        Expect(row, outcome.fault);
    }
    // clang-format on
}

} // namespace
