// SPDX-License-Identifier: GPL-3.0-or-later
// Catches formulas that compute wrong values, against values of independent origin.

#include "formula/Formula.h"

#include "formula/ExpressionWords.h"
#include "functions/ExpressionCheck.h"
#include "support/HonestExpressions.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

namespace {

using vexa::CompileFormula;

std::shared_ptr<const vexa::Formula> Compiled(std::string_view text) {
    vexa::FormulaOutcome outcome = CompileFormula(text);
    EXPECT_TRUE(outcome) << text << "\n" << outcome.fault.position << ": " << outcome.fault.reason;
    return outcome.formula;
}

float ValueOf(std::string_view text, float x = 0, float y = 0) {
    const auto formula = Compiled(text);
    return formula ? formula->At(x, y, std::array<float, vexa::kMostInputs>{}.data()) : NAN;
}

/// Points between -4 and 4, and the special ones.
struct Points {
    std::vector<float> x, y;

    explicit Points(std::size_t count) {
        std::mt19937 random(7);
        const auto any = [&random] { return static_cast<float>(random()) * 0x1p-29F - 4; };
        for (std::size_t i = 0; i < count; i++) {
            x.push_back(any());
            y.push_back(any());
        }
    }
    std::vector<float> Of(const vexa::Formula& formula) const {
        std::vector<float> values(x.size());
        formula.Evaluate(x.data(), y.data(), nullptr, values.data(), values.size());
        return values;
    }
};

bool Same(float a, float b) {
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

TEST(Formula, ComputesWhatPeopleWrite) {
    for (const test::Honest& honest : test::kHonest) {
        const double value = ValueOf(honest.expression, test::kX, test::kY);
        EXPECT_NEAR(value, honest.value, 2e-7 * std::max(1.0, std::abs(honest.value)))
            << honest.expression;
    }
}

/// Every function of the tables, as float, double and long double.
std::vector<std::string> EveryCall() {
    std::vector<std::string> all;
    for (const vexa::MathFunction& function : vexa::MathFunctions()) {
        for (const char* ending : {"", "f", "l"}) {
            std::string call = std::string(function.name) + ending + "(";
            for (int i = 0; i < function.arguments; i++)
                call += i > 0 ? ", 3*y-x" : function.order ? "3" : "2.5f*x";
            all.push_back(call + ")");
        }
    }
    for (const vexa::MathFunction& macro : vexa::MathMacros())
        all.push_back(std::string(macro.name) + (macro.arguments > 1 ? "(x, y) != 0" : "(x) != 0"));
    return all;
}

TEST(Formula, DefinesWhatCLeavesUndefined) {
    struct Case {
        std::string_view text;
        float value;
    };
    // clang-format off
    for (const auto& [text, value] : std::initializer_list<Case>{
             {"1/(int)x", 0}, {"7%(int)x", 0}, {"(-2147483647-1)/((int)x-1)", -0x1p31F},
             {"(-2147483647-1)%((int)x-1)", 0}, {"2147483647+((int)x+1)", -0x1p31F},
             {"-(-2147483647-1+(int)x)", -0x1p31F}, {"1<<((int)x+33)", 2}, {"8>>((int)x+65)", 4},
             {"1LL<<((int)x-1)", -0x1p63F}, {"(int)(x+3e9)", 0x1p31F}, {"(int)(x-3e9)", -0x1p31F},
             {"(int)(x/x)", 0}, {"(long)(x+1e30)", 0x1p63F}, {"(unsigned)(x-1.0)", 0x1p32F},
             {"(unsigned long)(x+1e30)", 0x1p64F}, {"(unsigned char)(x+300.0)", 44},
             {"(unsigned long)(x+0x1.8p63)", 0x1.8p63F}, {"signbit(-(x/x))", 0},
             {"lrint(x+1e30)", 0x1p63F},
         })
        EXPECT_EQ(ValueOf(text), value) << text;
    // clang-format on
}

TEST(Formula, HearsTheNoteAndTheMacros) {
    using Kind = vexa::FunctionInput::Kind;
    const auto formula = Compiled("x + d*10 + ctl(74)*100 + vel*1e3 + key*1e4 + t*1e5 + ctl(74)");
    ASSERT_TRUE(formula);
    const std::vector<vexa::FunctionInput> expected = {{Kind::Macro, 3}, {Kind::Controller, 74},
                                                       {Kind::Velocity}, {Kind::Key},
                                                       {Kind::Time},     {Kind::TimeRest}};
    EXPECT_TRUE(std::ranges::equal(formula->Inputs(), expected));
    EXPECT_EQ(formula->At(1, 0, std::array{1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 0.25F}.data()), 568213);
    EXPECT_TRUE(Compiled("x*y")->Inputs().empty());
    // An input without influence is not listed.
    EXPECT_TRUE(Compiled("(1 ? x : vel) + sin(x)")->Inputs().empty());
    // The compiler provides none of these inputs.
    for (const char* text : {"a", "b", "c", "d", "vel", "key", "t", "ctl(1)"})
        EXPECT_TRUE(vexa::CheckExpression(text)) << text;
}

const char* const kTerrains[] = {
    "(5*(x*y*y-y*x*x)-3*(x-y))/((1+x*x+y*y)*(1+x*x+y*y))",
    "sin(3*x)*cos(2*y)+exp(-x*x-y*y)+tanh(x)*atan2(y,x)+log(fabs(x))*pow(fabs(x),y)",
    "(int)(x*1e9)*3+((unsigned)(y*1e9)>>3)%7+((long)(x*1e12)&0xfff)/3+(unsigned long)(x*1e19)",
    "x>y ? nextafterf(x,y)*copysign(x,y) : ldexp(y,3)+fmax(x,y)-fmin(x,y)+(short)(y*1e6)",
};

/// Blocks of any length, single points and all instruction sets must give the same bits, far from
/// 0, at the limits of argument reductions, and for NaN.
TEST(Formula, IsTheSameOnEveryInstructionSetAndHoweverItIsAsked) {
    Points points(3000);
    const float special[] = {0,       -0.0F, INFINITY, -INFINITY, NAN,   1e-45F,
                             -1e-38F, 3e38F, -1e30F,   1e10F,     2e10F, 1e5F};
    for (const float x : special) {
        for (const float y : special) {
            points.x.push_back(x);
            points.y.push_back(y);
        }
    }
    for (std::size_t i = 0; i < 1000; i++)
        points.x[i] *= 1000;
    std::vector<std::string> all = EveryCall();
    all.insert(all.end(), std::begin(kTerrains), std::end(kTerrains));
    for (const std::string& text : all) {
        const std::vector<float> values = points.Of(*Compiled(text));
        for (const vexa::formula::FormulaLoops& loops : vexa::formula::RunnableFormulaLoops()) {
            const auto formula = CompileFormula(text, loops).formula;
            std::vector<float> others(values.size());
            std::size_t done = 0;
            for (std::size_t some = 1; done < others.size(); some = some * 2 % 509 + 1) {
                const std::size_t count = std::min(some, others.size() - done);
                formula->Evaluate(&points.x[done], &points.y[done], nullptr, &others[done], count);
                done += count;
            }
            for (std::size_t i = 0; i < values.size(); i++)
                ASSERT_TRUE(Same(values[i], others[i]))
                    << text << " at " << points.x[i] << ", " << points.y[i] << " by set "
                    << &loops - vexa::formula::RunnableFormulaLoops().data() << ": " << others[i]
                    << " instead of " << values[i];
        }
    }
}

/// Divides floats of any kind and size, and such whose quotient is as close as possible to the
/// midpoint between two floats.
TEST(Formula, QuotientsAreThoseOfDoublePrecisionOnEveryInstructionSet) {
    std::mt19937 random(3);
    std::vector<float> x, y;
    for (std::uint32_t i = 0; i < 1 << 19; i++) {
        // Of one size for a while, so that nothing else draws attention to it.
        const std::uint32_t size = i >> 9 & 0xff;
        for (std::vector<float>* to : {&x, &y}) {
            const auto bits = static_cast<std::uint32_t>(random());
            to->push_back(
                std::bit_cast<float>(size == 0 ? bits : (bits & 0x807fffff) | size << 23));
        }
    }
    for (int i = 0; i < 1 << 19; i++) {
        // 2^25 above = middle below + r, where the middle has 25 bits of which the last is set.
        const std::uint32_t below = std::uint32_t(random()) >> 9 | 0x800001, r = 2 * (i % 2) - 1U;
        std::uint32_t inverse = below;
        for (int k = 0; k < 4; k++)
            inverse *= 2 - below * inverse;
        const std::uint32_t middle = (0 - r * inverse) & 0x1ffffff;
        const double above = (double(middle) * below + std::int32_t(r)) * 0x1p-25;
        x.push_back(static_cast<float>(std::ldexp(above, int(random() % 8) - 28)));
        y.push_back(static_cast<float>(std::ldexp(double(below), int(random() % 8) - 28)));
    }
    for (const std::string text : {"0.35*x/y", "0.25*x/y", "-1e5*x/y", "1e-40*x/y"}) {
        const std::shared_ptr<const vexa::Formula> formula = Compiled(text);
        ASSERT_EQ(formula->Length(), 1U);
        const double factor = std::stod(text);
        std::vector<float> values(x.size());
        formula->Evaluate(x.data(), y.data(), nullptr, values.data(), x.size());
        for (std::size_t i = 0; i < x.size(); i++)
            ASSERT_TRUE(Same(values[i], static_cast<float>(factor * double(x[i]) / double(y[i]))))
                << text << " at " << x[i] << ", " << y[i];
    }
}

std::string Repeated(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; i++)
        all += text;
    return all;
}

TEST(Formula, IsBoundedWhateverItsText) {
    // As deep as possible, as long as possible, and with as many live values as possible.
    const std::string sum = Repeated("+x*1.5+sin(y*2.5)", 3800);
    ASSERT_LE(sum.size(), vexa::kLongestExpression);
    EXPECT_TRUE(CompileFormula("0" + sum));
    EXPECT_EQ(Compiled(sum)->Length() < 20000, true);
    EXPECT_EQ(ValueOf(Repeated("(", 256) + "x" + Repeated(")", 256), 3), 3);
    EXPECT_EQ(CompileFormula(Repeated("(", 10000) + "x").fault.reason,
              "the expression is nested too deeply");
    std::string nested = "x";
    for (int i = 0; i < 250; i++)
        nested = "x*" + std::to_string(i) + "." + "+(" + nested + ")";
    EXPECT_EQ(ValueOf(nested, 1), 250 * 249 / 2 + 1);
    std::string first, again;
    for (int i = 0; i < 1500; i++) {
        first += "+sin(x+" + std::to_string(i) + ")";
        again += "*sin(x+" + std::to_string(i) + ")";
    }
    EXPECT_NE(CompileFormula(first + again).fault.reason.find("too many intermediate values"),
              std::string::npos);
    // Equal operations are computed once, and constant ones in advance.
    EXPECT_EQ(Compiled("(x*y+1)*(y*x+1)")->Length(), 2U);
    EXPECT_EQ(Compiled("x + sin(M_PI/3) * (2 > 1 ? 4 : x)")->Length(), 3U);
    EXPECT_LT(Compiled("x*y")->Cost(), Compiled("sin(x*y)")->Cost());
}

} // namespace
