// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/ExpressionWords.h"

#include "formula/ExpressionLimits.h"
#include "kits/support/Quoted.h"

#include <algorithm>
#include <array>

namespace vexa {

namespace {

constexpr auto kFunctions = std::to_array<MathFunction>({
    {.name = "acos"},
    {.name = "acosh"},
    {.name = "asin"},
    {.name = "asinh"},
    {.name = "atan"},
    {.name = "atan2", .arguments = 2},
    {.name = "atanh"},
    {.name = "cbrt"},
    {.name = "ceil"},
    {.name = "copysign", .arguments = 2},
    {.name = "cos"},
    {.name = "cosh"},
    {.name = "erf"},
    {.name = "erfc"},
    {.name = "exp"},
    {.name = "exp2"},
    {.name = "expm1"},
    {.name = "fabs"},
    {.name = "fdim", .arguments = 2},
    {.name = "floor"},
    {.name = "fma", .arguments = 3},
    {.name = "fmax", .arguments = 2},
    {.name = "fmin", .arguments = 2},
    {.name = "fmod", .arguments = 2},
    {.name = "hypot", .arguments = 2},
    {.name = "ilogb", .integer = true},
    {.name = "j0"},
    {.name = "j1"},
    {.name = "jn", .arguments = 2, .order = true},
    {.name = "ldexp", .arguments = 2},
    {.name = "lgamma"},
    {.name = "llrint", .integer = true},
    {.name = "llround", .integer = true},
    {.name = "log"},
    {.name = "log10"},
    {.name = "log1p"},
    {.name = "log2"},
    {.name = "logb"},
    {.name = "lrint", .integer = true},
    {.name = "lround", .integer = true},
    {.name = "nearbyint"},
    {.name = "nextafter", .arguments = 2},
    {.name = "nexttoward", .arguments = 2},
    {.name = "pow", .arguments = 2},
    {.name = "remainder", .arguments = 2},
    {.name = "rint"},
    {.name = "round"},
    {.name = "scalbln", .arguments = 2},
    {.name = "scalbn", .arguments = 2},
    {.name = "sin"},
    {.name = "sinh"},
    {.name = "sqrt"},
    {.name = "tan"},
    {.name = "tanh"},
    {.name = "tgamma"},
    {.name = "trunc"},
    {.name = "y0"},
    {.name = "y1"},
    {.name = "yn", .arguments = 2, .order = true},
});

constexpr auto kMacros = std::to_array<MathFunction>({
    {.name = "fpclassify", .integer = true},
    {.name = "isfinite", .integer = true},
    {.name = "isgreater", .arguments = 2, .integer = true},
    {.name = "isgreaterequal", .arguments = 2, .integer = true},
    {.name = "isinf", .integer = true},
    {.name = "isless", .arguments = 2, .integer = true},
    {.name = "islessequal", .arguments = 2, .integer = true},
    {.name = "islessgreater", .arguments = 2, .integer = true},
    {.name = "isnan", .integer = true},
    {.name = "isnormal", .integer = true},
    {.name = "isunordered", .arguments = 2, .integer = true},
    {.name = "signbit", .integer = true},
});

constexpr auto kConstants = std::to_array<MathConstant>({
    {.name = "FP_ILOGB0", .integer = true},
    {.name = "FP_ILOGBNAN", .integer = true},
    {.name = "FP_INFINITE", .integer = true},
    {.name = "FP_NAN", .integer = true},
    {.name = "FP_NORMAL", .integer = true},
    {.name = "FP_SUBNORMAL", .integer = true},
    {.name = "FP_ZERO", .integer = true},
    {.name = "HUGE_VAL"},
    {.name = "HUGE_VALF"},
    {.name = "HUGE_VALL"},
    {.name = "INFINITY"},
    {.name = "M_1_PI"},
    {.name = "M_2_PI"},
    {.name = "M_2_SQRTPI"},
    {.name = "M_E"},
    {.name = "M_LN10"},
    {.name = "M_LN2"},
    {.name = "M_LOG10E"},
    {.name = "M_LOG2E"},
    {.name = "M_PI"},
    {.name = "M_PI_2"},
    {.name = "M_PI_4"},
    {.name = "M_SQRT1_2"},
    {.name = "M_SQRT2"},
    {.name = "NAN"},
});

template<class Rows>
auto Find(const Rows& rows, std::string_view name) -> decltype(rows.data()) {
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [name](const auto& candidate) { return candidate.name == name; });
    return row == rows.end() ? nullptr : &*row;
}

} // namespace

std::span<const MathFunction> MathFunctions() {
    return kFunctions;
}

std::span<const MathFunction> MathMacros() {
    return kMacros;
}

std::span<const MathConstant> MathConstants() {
    return kConstants;
}

const MathFunction* FindMathFunction(std::string_view name) {
    if (const MathFunction* macro = Find(kMacros, name))
        return macro;
    if (const MathFunction* function = Find(kFunctions, name))
        return function;
    if (name.ends_with('f') || name.ends_with('l'))
        return Find(kFunctions, name.substr(0, name.size() - 1));
    return nullptr;
}

const MathConstant* FindMathConstant(std::string_view name) {
    return Find(kConstants, name);
}

std::string UnknownName(std::string_view word) {
    return kits::Quoted(word) +
           " is neither x or y nor a function or constant of the maths library "
           "that takes and gives numbers";
}

std::string OrderFault(const MathFunction& function) {
    return "the order of " + std::string(function.name) + " must be a whole number up to " +
           std::to_string(kHighestOrder) + ", written out";
}

} // namespace vexa
