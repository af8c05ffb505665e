// Expressions that people write, and their values at one point, worked out from definitions, series
// and integrals instead of by C.

#include "functions/ExpressionCheck.h"
#include "functions/ExpressionWords.h"
#include "functions/ProgramFolder.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include <gtest/gtest.h>

namespace {

constexpr float kX = 0.75F;
constexpr float kY = -2.5F;

struct Honest {
    std::string_view expression;
    double value;
};

// clang-format off
constexpr Honest kHonest[] = {
    {"acos(x)", 0.7227342478134157}, {"acosh(x+2)", 1.66991903058777},
    {"asin(x)", 0.848062078981481}, {"asinh(y)", -1.6472311463710958},
    {"atan(y)", -1.1902899496825317}, {"atan2(y, x)", -1.2793395323170296},
    {"atanh(x)", 0.9729550745276566}, {"cbrt(y)", -1.3572088082974532}, {"ceil(y)", -2},
    {"copysign(x, y)", -0.75}, {"cos(y)", -0.8011436155469337}, {"cosh(y)", 6.132289479663686},
    {"erf(x)", 0.7111556336535151}, {"erfc(x)", 0.2888443663464849}, {"exp(y)", 0.0820849986238988},
    {"exp2(y)", 0.1767766952966369}, {"expm1(x)", 1.1170000166126748}, {"fabs(y)", 2.5},
    {"fdim(x, y)", 3.25}, {"fdim(y, x)", 0}, {"floor(y)", -3}, {"fma(x, y, 10)", 8.125},
    {"fmax(x, y)", 0.75}, {"fmin(x, y)", -2.5}, {"fmod(y, x)", -0.25},
    {"hypot(x, y)", 2.6100766272276377}, {"ilogb(y)", 1}, {"j0(x)", 0.8642422751666459},
    {"j1(x)", 0.34924360217486045}, {"jn(3, 5*x)", 0.4138409169737869}, {"ldexp(x, 3)", 6},
    {"lgamma(4.5)", 2.4537365708424423}, {"llrint(x)", 1}, {"llround(y)", -3},
    {"log(x)", -0.2876820724517809}, {"log10(x)", -0.12493873660829993},
    {"log1p(x)", 0.5596157879354227}, {"log2(x)", -0.4150374992788438}, {"logb(100*x)", 6},
    {"lrint(y)", -2}, {"lround(y)", -3}, {"nearbyint(y)", -2},
    {"nextafterf(x, y)", 0.7499999403953552}, {"nexttoward(x, y)", 0.75},
    {"pow(x, y)", 2.052800957118669}, {"remainder(y, x)", -0.25}, {"rint(1.5)", 2},
    {"round(y)", -3}, {"scalbln(x, 2)", 3}, {"scalbn(y, -1)", -1.25},
    {"sin(x)", 0.6816387600233341}, {"sinh(x)", 0.82231673193583}, {"sqrt(x)", 0.8660254037844386},
    {"tan(x)", 0.9315964599440724}, {"tanh(x)", 0.6351489523872873}, {"tgamma(5)", 24},
    {"tgamma(0.5)", 1.7724538509055159}, {"trunc(y)", -2}, {"y0(x)", -0.1371727693857704},
    {"y1(x)", -1.037594550769282}, {"yn(2, 4)", 0.21590359460360514},
    {"sinf(x)+cosl(y)", -0.11950485552359957}, {"powf(x, 2)", 0.5625}, {"hypotl(3, 4)", 5},
    {"fmodf(7, 4)", 3}, {"fpclassify(x) == FP_NORMAL", 1}, {"fpclassify(x-x) == FP_ZERO", 1},
    {"isfinite(x/(x-x))", 0}, {"isinf(1/(x-x)) != 0", 1}, {"isnan((x-x)/(y-y)) != 0", 1},
    {"isnormal(x)", 1}, {"signbit(y) != 0", 1}, {"isgreater(x, y)", 1}, {"isgreaterequal(y, x)", 0},
    {"isless(x, y)", 0}, {"islessequal(x, x)", 1}, {"islessgreater(x, y)", 1},
    {"isunordered(x, NAN)", 1}, {"M_PI", 3.141592653589793}, {"M_PI_2-M_PI_4", 0.7853981633974483},
    {"M_1_PI*M_PI", 1}, {"M_2_PI", 0.6366197723675814}, {"M_2_SQRTPI", 1.1283791670955126},
    {"M_E", 2.718281828459045}, {"M_LN2+M_LN10", 2.995732273553991}, {"M_LOG2E*M_LN2", 1},
    {"M_LOG10E", 0.43429448190325176}, {"M_SQRT2*M_SQRT1_2", 1}, {"x < INFINITY", 1},
    {"HUGE_VAL == HUGE_VALF", 1}, {"FP_ILOGB0 < 0", 1}, {"x+y", -1.75}, {"x- -y", -1.75},
    {"-x*-y", -1.875}, {"x/y", -0.3}, {"2+3*4-6/4", 13}, {"2.0+3*4-6/4.", 12.5}, {"(2+3)*4", 20},
    {"7%3", 1}, {"(int)y%2", 0}, {"-7/2", -3}, {"-7%3", -1}, {"1<<10", 1024}, {"1024>>3", 128},
    {"-16>>2", -4}, {"1<<2+1", 8}, {"12&10", 8}, {"12|3", 15}, {"12^10", 6}, {"~5", -6}, {"!x", 0},
    {"!(x-x)", 1}, {"1|2^3&2", 1}, {"x<y", 0}, {"x>y", 1}, {"x<=x", 1}, {"y>=x", 0}, {"x==x", 1},
    {"x!=x", 0}, {"3>2>1", 0}, {"x>0&&y<0", 1}, {"x<0||y>0", 0}, {"0||1&&0", 0}, {"x>0?y:7", -2.5},
    {"x<0?1:y<0?2:3", 2}, {"x>0?y>0?1:2:3", 2}, {"(x>0?1:2)+10", 11}, {"(int)y", -2},
    {"(int)2.99", 2}, {"(unsigned char)300", 44}, {"(signed char)200", -56}, {"(char)65", 65},
    {"(short)70000", 4464}, {"(_Bool)y", 1}, {"(unsigned)-1 > 0", 1},
    {"(long long)1<<40", 1099511627776}, {"(unsigned long)3-1", 2}, {"(float)0.1 == 0.1", 0},
    {"(double)x*2", 1.5}, {"(long double)1/4", 0.25}, {"(float)(int)(x*10)/4", 1.75}, {"0x10", 16},
    {"0XfF", 255}, {"010", 8}, {"0x1p4", 16}, {"0x1.8p1", 3}, {"0X.8P-1f", 0.25}, {"1e3", 1000},
    {"1E-2", 0.01}, {"1.e+1", 10}, {".5f", 0.5}, {"2.5L", 2.5}, {"1u-2>0", 1}, {"1-2>0", 0},
    {"0x7fffffff+1<0", 1}, {"4294967295u+1u", 0}, {"1ull<<33", 8589934592}, {"08.5", 8.5},
    {"(5*(x*y*y-y*x*x)-3*(x-y))/((1+x*x+y*y)*(1+x*x+y*y))", 0.339456},
    {"sin(x)*\tcos( y )", -0.5460905407020226}, {"((((x))))", 0.75}, {"- - -x", -0.75},
    {"fma(sin(x), cos(y), sqrt(fabs(y)))", 1.0350482893821673},
};
// clang-format on

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
    ASSERT_TRUE(outcome) << outcome.details;
    for (std::size_t i = 0; i < std::size(kHonest); i++) {
        const double value = outcome.addon->At(static_cast<float>(i), 0, nullptr);
        const double expected = kHonest[i].value;
        EXPECT_NEAR(value, expected, 2e-7 * std::max(1.0, std::abs(expected)))
            << kHonest[i].expression;
    }
}

/// Every name that is accepted is one that the maths header declares, with that many arguments.
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
    EXPECT_TRUE(outcome) << outcome.details;
    EXPECT_EQ(outcome.details.find("implicit declaration"), std::string::npos) << outcome.details;
}

} // namespace
