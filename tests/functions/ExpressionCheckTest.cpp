// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/ExpressionCheck.h"

#include <sstream>

#include <gtest/gtest.h>

namespace {

using vexa::CheckExpression;

struct Refused {
    std::string expression;
    /// The byte offset of the fault, and a part of its text.
    std::size_t position;
    std::string reason;
};

std::string Text(const std::optional<vexa::ExpressionFault>& fault) {
    return fault ? std::to_string(fault->position) + ": " + fault->reason : "accepted";
}

void ExpectRefused(const std::vector<Refused>& cases) {
    for (const Refused& c : cases) {
        const auto fault = CheckExpression(c.expression);
        ASSERT_TRUE(fault) << c.expression;
        EXPECT_EQ(fault->position, c.position) << c.expression << "\n" << Text(fault);
        EXPECT_NE(fault->reason.find(c.reason), std::string::npos) << c.expression << "\n"
                                                                   << Text(fault);
    }
}

void ExpectAccepted(const std::vector<std::string_view>& expressions) {
    for (const std::string_view expression : expressions)
        EXPECT_EQ(Text(CheckExpression(expression)), "accepted") << expression;
}

TEST(ExpressionCheck, RefusesOtherNames) {
    ExpectRefused({{"system(x)", 0, "\"system\" is neither"},
                   {"x + system(\"id\")", 4, "\"system\""},
                   {"1 ? x : goto", 8, "\"goto\""}});
    std::istringstream names(
        "__builtin_trap __extension__ asm r2rfun sizeof _Alignof _Generic signgam "
        "errno z x1 xy X abs frexp modff remquo nan lgamma_r isnanf sind sinff "
        "exp10 MAXFLOAT I __LINE__ EXPRESSION");
    for (std::string name; names >> name;)
        ExpectRefused({{name + " (x, y)", 0, '"' + name + '"'}});
}

TEST(ExpressionCheck, RefusesWhatIsMoreThanArithmetic) {
    // clang-format off
    ExpectRefused({
        {"x=1", 1, "assigned"}, {"x += 1", 2, "assigned"}, {"x<<=2", 1, "assigned"},
        {"x>>=2", 1, "assigned"}, {"x|=2", 1, "assigned"}, {"x++", 1, "counted up"},
        {"x++y", 1, "counted up"}, {"++x", 0, "counted up"}, {"x---y", 1, "counted down"},
        {"--x", 0, "counted down"}, {"x, y", 1, "an operator is expected before \",\""},
        {"(x, y)", 2, "\")\" is expected"}, {"&x", 0, "before \"&\""}, {"*x", 0, "before \"*\""},
        {"*(int*)0", 0, "before \"*\""}, {"(int*)0", 4, "\")\" is expected before \"*\""},
        {"&&x", 0, "before \"&&\""}, {"x &&& y", 4, "before \"&\""}, {"x[0]", 1, "brackets"},
        {"x<:0:>", 1, "brackets"}, {"({x;})", 1, "brackets"}, {"(<%x%>)", 1, "brackets"},
        {"(float){x}", 7, "brackets"}, {"x; y", 1, "statements"}, {"x.y", 1, "\".\" has no place"},
        {"x->y", 1, "structures"}, {"\"x\"", 0, "texts or characters"},
        {"'x'", 0, "texts or characters"}, {"x\\", 1, "backslash"},
        {"x ? y : \\\n x", 8, "backslash"}, {"#x", 0, "preprocessor"},
        {"x %: y", 2, "preprocessor"}, {"x ?\?= y", 3, "before \"?\""}, {"x // y", 2, "comments"},
        {"x /* y */", 2, "comments"}, {"x\n#include </etc/passwd>", 1, "one line"},
        {"x\r", 1, "one line"}, {std::string("x\0+y", 4), 1, "control"}, {"x\v", 1, "control"},
        {"x\x7f", 1, "control"}, {"x\xc2\xa0+y", 1, "ASCII"}, {"\xef\xbb\xbfx", 0, "ASCII"},
        {"x @ y", 2, "\"@\" has no place"}, {"x $", 2, "\"$\" has no place"},
        {"x`id`", 1, "\"`\" has no place"}, {"(sin)(x)", 1, "the arguments of sin are missing"},
        {"sin", 0, "the arguments of sin are missing"}, {"x(1)", 1, "an operator is expected"},
        {"M_PI(x)", 4, "an operator is expected"}, {"(x)(y)", 3, "an operator is expected"},
    });
    // clang-format on
}

TEST(ExpressionCheck, RefusesWhatIsNoExpression) {
    // clang-format off
    ExpectRefused({
        {"", 0, "before the end"}, {" \t ", 3, "before the end"}, {"x+", 2, "before the end"},
        {"(x", 2, "\")\" is expected before the end"},
        {"x)", 1, "an operator is expected before \")\""}, {"()", 1, "before \")\""},
        {"x y", 2, "an operator is expected before \"y\""},
        {"x+9223372036854775808", 2, "larger than 64 bits"},
        {"0x10000000000000000", 0, "larger than 64 bits"}, {"2x", 0, "\"2x\" is not a number"},
        {"2 x", 2, "an operator is expected"}, {"x ? y", 5, "\":\" is expected"},
        {"x ?: y", 3, "before \":\""}, {"x : y", 2, "an operator is expected"},
        {"sin()", 4, "before \")\""}, {"sin(x, y)", 5, "\")\" is expected before \",\""},
        {"pow(x)", 5, "\",\" is expected"}, {"fma(x, y)", 8, "\",\" is expected"},
        {"(int)", 5, "before the end"}, {"(int float)x", 1, "not an arithmetic type"},
        {"(long long long)x", 1, "not an arithmetic type"},
        {"(unsigned float)x", 1, "not an arithmetic type"}, {"(const int)x", 1, "\"const\""},
        {"(int const)x", 1, "not an arithmetic type"}, {"(_Complex float)x", 1, "\"_Complex\""},
        {"(void)x", 1, "\"void\""}, {"int x", 0, "\"int\""},
    });
    // clang-format on
    for (const std::string_view number :
         {"08",   "0x",   "0xg",   "0x1e+5", "1.2.3", "1..2",   "1e",    "1e+",  "1.5u",
          "1lL",  "1ulu", "1uu",   "1lul",   "0x1.8", "0x1.8p", "0x.p1", "1i",   "1.0i",
          "1.0q", "1.0w", "1.0df", "0b101",  "1'000", "1_000",  "1fl",   "0x1g", "1f"})
        ExpectRefused({{std::string(number), number == "1'000" ? 1U : 0U,
                        number == "1'000" ? "texts" : "number"}});
}

TEST(ExpressionCheck, RefusesWholeDivisionsThatCouldEndTheProgram) {
    // clang-format off
    ExpectRefused({
        {"1/0", 1, "could be 0"}, {"(int)x % (int)y", 7, "could be 0"}, {"5 % !x", 2, "could be 0"},
        {"1 / (x > 0)", 2, "could be 0"}, {"7 / (unsigned char)256", 2, "could be 0"},
        {"7 / 18446744073709551616", 4, "larger than 64 bits"}, {"7 / -1", 2, "could be 0"},
        {"7 / ilogb(x)", 2, "could be 0"}, {"3 * 7 / FP_NAN", 6, "could be 0"},
        {"1 ? 2 : 7 / (x ? 1 : 0)", 10, "could be 0"}, {"jn(x, y)", 3, "the order of jn"},
        {"jn(101, y)", 3, "the order of jn"}, {"ynf((int)x, y)", 4, "the order of yn"},
    });
    // clang-format on
    ExpectAccepted({"1/x", "x/0", "(int)x % 3", "(int)x / (0x10)", "7 / (float)(x > 0)", "1.0/0",
                    "(int)x / 2 % 2", "7 / (x ? 1.0 : 0)", "7 / M_PI", "7 / sin(x)", "jn(100, x)"});
}

TEST(ExpressionCheck, AcceptsAllOfCsArithmetic) {
    // clang-format off
    ExpectAccepted({
        "(5*(x*y*y-y*x*x)-3*(x-y))/((1+x*x+y*y)*(1+x*x+y*y))", "x- -y", "x+ +y", "- - -x", "x-!y",
        "~(int)x", "x\t+\ty", "x<y?x:y", "x ? y ? 1 : 2 : x ? 3 : 4",
        "x<<2>>1 <= 3 >= 4 == 5 != 6 & 7 ^ 8 | 9 && 10 || 11", "x& y", "x&&y", "(((x)))",
        "(unsigned char)x", "(long unsigned int long)x", "(double long)-x", "(_Bool)(int)(float)x",
        "(signed)x", "sin (x)", "fma(x, y, x)", "atan2f(y, x) + atan2l(y, x)",
        "isless(x, y) + signbit(x) + fpclassify(x) == FP_NAN",
        "M_PI + M_2_SQRTPI + INFINITY + NAN + HUGE_VALL",
        "0", "07", "12", "0xfF", "0XA", "1u", "1L", "1ul", "1lu", "1LLU", "1ull", "1.", ".5", "1.5",
        "1e5", "1E+5", "1.e-5f", ".5F", "1.5L", "08.5", "09e1", "0x1p3", "0x.8P-3f", "0x1.p+3L",
        "0xe +1", "18446744073709551615u", "9223372036854775807", "0xffffffffffffffff",
    });
    // clang-format on
}

/// The checker uses no more stack than its limits allow.
TEST(ExpressionCheck, BoundsLengthAndDepth) {
    const auto repeat = [](std::string_view text, int count) {
        std::string all;
        for (int i = 0; i < count; i++)
            all += text;
        return all;
    };
    struct Nesting {
        const char* before;
        const char* after;
        int levels;
    };
    for (const Nesting& nesting :
         {Nesting{"(", ")", 1}, Nesting{"- ", "", 1}, Nesting{"sin(", ")", 1},
          Nesting{"(int)", "", 1}, Nesting{"x?", ":x", 1}, Nesting{"x?x:", "", 1},
          Nesting{"!(", ")", 2}, Nesting{"(float)(", ")", 2}}) {
        const int most = vexa::kDeepestExpression / nesting.levels;
        const auto nested = [&](int depth) {
            return repeat(nesting.before, depth) + "x" + repeat(nesting.after, depth);
        };
        ExpectAccepted({nested(most)});
        const auto fault = CheckExpression(nested(most + 1));
        ASSERT_TRUE(fault) << nesting.before;
        EXPECT_EQ(fault->reason, "the expression is nested too deeply");
        EXPECT_TRUE(CheckExpression(nested(10'000)));
    }
    const std::string longest = repeat("x+", vexa::kLongestExpression / 2 - 1) + "xx";
    EXPECT_EQ(longest.size(), vexa::kLongestExpression);
    ExpectAccepted({longest.substr(0, longest.size() - 1), std::string(65535, '1') + '.'});
    ExpectRefused({{longest + "x", vexa::kLongestExpression, "longer than 65536"}});
}

} // namespace
