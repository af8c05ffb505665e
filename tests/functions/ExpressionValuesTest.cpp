// What accepted expressions compute, against the same text compiled into this test.

#include "functions/ExpressionCheck.h"
#include "functions/ExpressionWords.h"
#include "functions/ProgramFolder.h"

#include <array>
#include <cmath>
#include <sstream>

#include <gtest/gtest.h>
#include <math.h>

// Expressions are written as users write them, not as this program's own code is.
#pragma GCC diagnostic ignored "-Wfloat-conversion"
#pragma GCC diagnostic ignored "-Wparentheses"
#pragma GCC diagnostic ignored "-Wbool-compare"
#pragma GCC diagnostic ignored "-Wint-in-bool-context"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Woverflow"

namespace {

struct Expression {
    const char* text;
    double (*value)(float x, float y);
};

/// The text and the value from one and the same source. C computes sin(x) in double where C++ has
/// an overload for float, hence the tolerance.
#define EXPRESSION(...)                                                                            \
    Expression {                                                                                   \
#__VA_ARGS__, [](float x, float y) -> double { return __VA_ARGS__; }                       \
    }

const auto kExpressions = std::to_array<Expression>({
    EXPRESSION((5 * (x * y * y - y * x * x) - 3 * (x - y)) /
               ((1 + x * x + y * y) * (1 + x * x + y * y))),
    EXPRESSION(x),
    EXPRESSION(-y),
    EXPRESSION(x - -y),
    EXPRESSION(x + +y),
    EXPRESSION(!x + !!y),
    EXPRESSION(~(int)x),
    EXPRESSION(x / y),
    EXPRESSION((int)(x * 10) / 3),
    EXPRESSION((int)(x * 10) % 3),
    EXPRESSION((int)(x * 10) / 3 * 3 + (int)(x * 10) % 3),
    EXPRESSION(1 - 2 - 3 * x),
    EXPRESSION(12 / 2 / 3 + y),
    EXPRESSION(7 / 2 * x),
    EXPRESSION(7 / 2. * x),
    EXPRESSION(x < y),
    EXPRESSION(x > y),
    EXPRESSION(x <= y),
    EXPRESSION(x >= y),
    EXPRESSION(x == y),
    EXPRESSION(x != y),
    EXPRESSION(x < y == 1 != 0),
    EXPRESSION(x > 0 && y > 0),
    EXPRESSION(x > 0 || y > 0),
    EXPRESSION(x > 0 || y > 0 && x < y),
    EXPRESSION((int)x & 3 | 4 ^ (int)y),
    EXPRESSION(1 << 2 + 1),
    EXPRESSION((int)(x * 1000) >> 3 << 1),
    EXPRESSION(x > 0 ? y : -y),
    EXPRESSION(x > 1    ? 1
               : x < -1 ? -1
                        : x),
    EXPRESSION((x > 0 ? x : y) * 2),
    EXPRESSION((char)(x * 20)),
    EXPRESSION((unsigned char)(int)(x * 20)),
    EXPRESSION((short int)(x * 2000)),
    EXPRESSION((long long)(x * 1e6)),
    EXPRESSION((int long unsigned)3 - 1),
    EXPRESSION((float)0.1 - 0.1),
    EXPRESSION((double)x* x),
    EXPRESSION((long double)x / 3),
    EXPRESSION((int)-1.5 + (int)1.5),
    EXPRESSION(0x10 + 010 + 10),
    EXPRESSION(0x1.8p1 + 1e-3f + .5 + 2.),
    EXPRESSION(1u - 2 > 0),
    EXPRESSION(0x7fffffffL + 1ull),
    EXPRESSION(sin(x) * cos(y)),
    EXPRESSION(sinf(x) + cosf(y)),
    EXPRESSION(tan(x) + asin(y / 4) + acos(x / 4) + atan(y)),
    EXPRESSION(atan2(y, x) + atan2f(x, y)),
    EXPRESSION(sinh(x) + cosh(y) + tanh(x)),
    EXPRESSION(asinh(x) + acosh(1 + y * y) + atanh(x / 4)),
    EXPRESSION(exp(-x* x) + exp2(y) + expm1(x)),
    EXPRESSION(log(1 + x * x) + log10(2 + y * y) + log1p(x * x) + log2(3 + x * x) + logb(x)),
    EXPRESSION(pow(fabs(x), y) + powf(2, x)),
    EXPRESSION(sqrt(x* x + y * y) + cbrt(x) + hypot(x, y)),
    EXPRESSION(floor(x) + ceil(y) + trunc(x) + round(y) + rint(x) + nearbyint(y)),
    EXPRESSION(fmod(x, 0.7) + remainder(y, 0.7) + fdim(x, y)),
    EXPRESSION(fmax(x, y) - fmin(x, y) + copysign(x, y) + fma(x, y, 2)),
    EXPRESSION(erf(x) + erfc(y) + tgamma(2 + x * x) + lgamma(2 + y * y)),
    EXPRESSION(ldexp(x, 3) + scalbn(y, -2) + scalbln(x, 1) + ilogb(8)),
    EXPRESSION(lrint(x) + llround(y) + lroundf(x)),
    EXPRESSION(j0(x) + j1(y) + jn(2, x) + y0(3 + x * x) + y1(3 + y * y) + yn(3, 4 + x)),
    EXPRESSION(nextafter(x, y) + nexttoward(y, x)),
    EXPRESSION(isnan(x / (x - x)) + isinf(1 / (y - y)) + isfinite(x) + isnormal(y) + !signbit(x)),
    EXPRESSION(isgreater(x, y) + 2 * islessequal(x, y) + 4 * isunordered(x, y)),
    EXPRESSION(fpclassify(x) == FP_NORMAL),
    EXPRESSION(M_PI* x + M_E * y + M_SQRT2 + M_LN2 + M_2_SQRTPI),
    EXPRESSION(x<0 ? INFINITY : y> 0 ? -HUGE_VAL : 0),
    EXPRESSION(x < 0 ? NAN : HUGE_VALF / 2),
    EXPRESSION(1 / (x - x)),
});

constexpr auto kPoints = std::to_array<std::array<float, 2>>(
    {{0.3F, 0.7F}, {-1.2F, 0.4F}, {2.5F, -3.1F}, {-0.01F, -2.0F}, {1.0F, 1.0F}});

bool Same(float value, double expected) {
    if (std::isnan(expected) || std::isinf(expected))
        return std::isnan(expected) ? std::isnan(value) : value == expected;
    return std::abs(value - expected) <= 4e-6 * std::max(1.0, std::abs(expected));
}

TEST(ExpressionValues, AreThoseOfC) {
    // One source for all: r2rfun(i, k) is the value of expression i at point k.
    std::ostringstream source;
    source << "#include <math.h>\n";
    for (std::size_t i = 0; i < kExpressions.size(); i++) {
        ASSERT_FALSE(vexa::CheckExpression(kExpressions[i].text)) << kExpressions[i].text;
        source << "static float f" << i << "(float x, float y) { return " << kExpressions[i].text
               << "; }\n";
    }
    source << "static float (*const all[])(float, float) = {";
    for (std::size_t i = 0; i < kExpressions.size(); i++)
        source << "f" << i << ", ";
    source << "};\nstatic const float points[][2] = {" << std::hexfloat;
    for (const auto& point : kPoints)
        source << "{" << point[0] << ", " << point[1] << "}, ";
    source << "};\nfloat r2rfun(float i, float k) {"
              " return all[(int)i](points[(int)k][0], points[(int)k][1]); }\n"
              "const char* r2rfunstr(void) { return \"all\"; }\n";

    const test::ProgramFolder folder;
    std::ofstream(folder.Path() / "all.c") << source.str();
    const vexa::FunctionCompiler compiler(folder.Path());
    const auto outcome = compiler.IncludeFunction(folder.Path() / "all.c");
    ASSERT_TRUE(outcome) << outcome.details;
    for (std::size_t i = 0; i < kExpressions.size(); i++) {
        for (std::size_t k = 0; k < kPoints.size(); k++) {
            const double expected = kExpressions[i].value(kPoints[k][0], kPoints[k][1]);
            const float value =
                outcome.addon->Function()(static_cast<float>(i), static_cast<float>(k));
            EXPECT_TRUE(Same(value, static_cast<float>(expected)))
                << kExpressions[i].text << " at " << kPoints[k][0] << ", " << kPoints[k][1] << ": "
                << value << " instead of " << expected;
        }
    }
}

/// Every name that is accepted is one that the maths header declares, with that many arguments.
TEST(ExpressionValues, EveryNameOfTheTablesCompiles) {
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
    EXPECT_TRUE(outcome) << outcome.details;
    EXPECT_EQ(outcome.details.find("implicit declaration"), std::string::npos) << outcome.details;
}

} // namespace
