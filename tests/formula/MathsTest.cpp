// SPDX-License-Identifier: GPL-3.0-or-later
// Catches functions of the maths library that are less accurate in double precision than required.

#include "formula/FormulaLoops.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <span>
#include <string>

#include <gtest/gtest.h>

namespace {

using vexa::formula::Constants;
using vexa::formula::kLanes;
using vexa::formula::Op;

struct Function {
    const char* name;
    Op op;
    long double (*exact)(long double);
    double lowest, highest;
    double ulps;
};

double Computed(Op op, double x, double y = 0) {
    alignas(64) std::array<double, kLanes> a, b, values;
    a.fill(x);
    b.fill(y);
    vexa::formula::RunnableFormulaLoops().back().Find(op, vexa::formula::Type::Double,
                                                      Constants::None)(a.data(), b.data(), nullptr,
                                                                       values.data(), kLanes);
    return values[0];
}

/// Returns by how many units in the last place of `exact` the value is off; 0 if both are equal or
/// both NaN.
double Ulps(double value, long double exact) {
    const auto rounded = static_cast<double>(exact);
    if (value == rounded || (std::isnan(value) && std::isnan(rounded)))
        return std::signbit(value) == std::signbit(rounded) || std::isnan(value) ? 0 : INFINITY;
    const double size = std::max(std::fabs(rounded), 0x1p-1022);
    if (std::isinf(size))
        return INFINITY;
    int exponent = 0;
    std::frexp(size, &exponent);
    return static_cast<double>(std::fabs(value - exact) / std::ldexp(1.0L, exponent - 53));
}

// clang-format off
const Function kOwn[] = {
    {"sin", Op::Sin, std::sin, -20, 20, 2}, {"sin far", Op::Sin, std::sin, -1.1e6, 1.1e6, 3},
    {"sin beyond", Op::Sin, std::sin, 1e6, 1e300, 2},
    {"cos", Op::Cos, std::cos, -20, 20, 2}, {"cos far", Op::Cos, std::cos, -1.1e6, 1.1e6, 3},
    {"exp", Op::Exp, std::exp, -1, 1, 2}, {"exp far", Op::Exp, std::exp, -750, 720, 2},
    {"log", Op::Log, std::log, 0, 3, 2}, {"log far", Op::Log, std::log, 0, 1e300, 2},
    {"log tiny", Op::Log, std::log, 0, 1e-310, 2},
    {"tanh", Op::Tanh, std::tanh, -1, 1, 3}, {"tanh far", Op::Tanh, std::tanh, -25, 25, 3},
    {"atan", Op::Atan, std::atan, -4, 4, 2}, {"atan far", Op::Atan, std::atan, -1e9, 1e9, 2},
};
const Function kLibrary[] = {
    {"tan", Op::Tan, std::tan, -1000, 1000, 1}, {"asin", Op::Asin, std::asin, -1.1, 1.1, 1},
    {"acos", Op::Acos, std::acos, -1.1, 1.1, 1}, {"sinh", Op::Sinh, std::sinh, -700, 700, 1},
    {"cosh", Op::Cosh, std::cosh, -700, 700, 1}, {"asinh", Op::Asinh, std::asinh, -99, 99, 1},
    {"acosh", Op::Acosh, std::acosh, 0, 99, 1}, {"atanh", Op::Atanh, std::atanh, -1.1, 1.1, 1},
    {"exp2", Op::Exp2, std::exp2, -1000, 1000, 1}, {"expm1", Op::Expm1, std::expm1, -9, 99, 1},
    {"log2", Op::Log2, std::log2, 0, 99, 1}, {"log10", Op::Log10, std::log10, 0, 99, 1},
    {"log1p", Op::Log1p, std::log1p, -2, 99, 1}, {"cbrt", Op::Cbrt, std::cbrt, -99, 99, 1},
    {"erf", Op::Erf, std::erf, -6, 6, 1}, {"erfc", Op::Erfc, std::erfc, -6, 25, 1.5},
    {"tgamma", Op::TGamma, std::tgamma, 0, 170, 1}, {"lgamma", Op::LGamma, std::lgamma, 3, 999, 1},
};
// clang-format on

/// The C library's long double functions are the reference; the greatest errors are recorded in the
/// run's output.
void ExpectWithinUlps(std::span<const Function> functions, double slack) {
    std::mt19937_64 random(3);
    for (const Function& function : functions) {
        double worst = 0, at = 0;
        for (int i = 0; i < 100000; i++) {
            const double part = static_cast<double>(random() >> 11) * 0x1p-53;
            const double x = function.lowest + part * (function.highest - function.lowest);
            const double ulps = Ulps(Computed(function.op, x), function.exact(x));
            if (ulps > worst) {
                worst = ulps;
                at = x;
            }
        }
        testing::Test::RecordProperty(function.name, std::to_string(worst));
        EXPECT_LE(worst, function.ulps + slack) << function.name << " at " << at;
        for (const double x : {0.0, -0.0, 1.0, -1.0, 0.5, 1e-300, -1e-300, 4e-320, 1e300, -1e300,
                               double(INFINITY), -double(INFINITY), double(NAN), 1e-9, -1e-9, 2.0})
            EXPECT_LE(Ulps(Computed(function.op, x), static_cast<double>(function.exact(x))),
                      function.ulps + slack)
                << function.name << " of " << x << " is " << Computed(function.op, x);
    }
}

TEST(FormulaMaths, OwnPolynomialsAreWithinThreeUlps) {
    ExpectWithinUlps(kOwn, 0);
}

/// The error that SLEEF guarantees, and the error of the reference itself.
TEST(FormulaMaths, LibraryKeepsItsPromise) {
    ExpectWithinUlps(kLibrary, 0.1);
}

TEST(FormulaMaths, AnglesAndPowersAreExactInAllDirections) {
    std::mt19937_64 random(4);
    const auto any = [&random] {
        const double part = static_cast<double>(random() >> 11) * 0x1p-53;
        return std::ldexp(2 * part - 1, static_cast<int>(random() % 60) - 30);
    };
    double worst = 0, worstPower = 0;
    for (int i = 0; i < 200000; i++) {
        const double y = any(), x = any();
        worst = std::max(worst, Ulps(Computed(Op::Atan2, y, x), std::atan2((long double)y, x)));
        const double base = std::fabs(x), power = std::fmod(y, 30);
        worstPower = std::max(
            worstPower, Ulps(Computed(Op::Pow, base, power), std::pow((long double)base, power)));
    }
    RecordProperty("atan2", std::to_string(worst));
    RecordProperty("pow", std::to_string(worstPower));
    EXPECT_LE(worst, 2.5);
    EXPECT_LE(worstPower, 1.1);
    // Just below the overflow to infinity.
    EXPECT_LE(Ulps(Computed(Op::Pow, 0x1.fffffep127, 8), std::pow(0x1.fffffep127L, 8)), 3);
    const double special[] = {
        0.0,         -0.0,  1,     -1,     2,     -3, 0.5, double(INFINITY), -double(INFINITY),
        double(NAN), 1e300, 1e308, -1e308, 4e-320};
    for (const double a : special) {
        for (const double b : special) {
            EXPECT_LE(Ulps(Computed(Op::Atan2, a, b), std::atan2((long double)a, b)), 2.5)
                << a << " " << b << " " << Computed(Op::Atan2, a, b);
            EXPECT_LE(Ulps(Computed(Op::Pow, a, b), std::pow(a, b)), 1.1)
                << a << " " << b << " " << Computed(Op::Pow, a, b);
        }
    }
}

TEST(FormulaMaths, BesselsFunctionsAreWithinTheirPromise) {
    using vexa::formula::Type;
    const vexa::formula::FormulaLoops loops = vexa::formula::RunnableFormulaLoops().back();
    alignas(64) std::array<double, kLanes> x, j, y;
    for (int order = 0; order <= 100; order += order < 5 ? 1 : 19) {
        for (double from = 0.001; from < 2000; from *= 1.03) {
            for (std::size_t i = 0; i < kLanes; i++)
                x[i] = from * (1 + 0.002 * static_cast<double>(i));
            loops.Find(Op::BesselJ, Type::Double, Constants::None)(x.data(), &order, nullptr,
                                                                   j.data(), kLanes);
            loops.Find(Op::BesselY, Type::Double, Constants::None)(x.data(), &order, nullptr,
                                                                   y.data(), kLanes);
            for (std::size_t i = 0; i < kLanes; i++) {
                const double size = 1 / std::sqrt(1 + x[i]);
                const double exactJ = ::jn(order, x[i]), exactY = ::yn(order, x[i]);
                ASSERT_LE(std::fabs(j[i] - exactJ), 1e-13 * std::max(size, std::fabs(exactJ)))
                    << "jn(" << order << ", " << x[i] << ") is " << j[i];
                ASSERT_TRUE(y[i] == exactY ||
                            std::fabs(y[i] - exactY) <= 1e-13 * std::max(size, std::fabs(exactY)))
                    << "yn(" << order << ", " << x[i] << ") is " << y[i] << " not " << exactY;
            }
        }
    }
}

} // namespace
