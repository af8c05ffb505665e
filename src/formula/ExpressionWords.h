// SPDX-License-Identifier: GPL-3.0-or-later
// The names that an expression may use besides x and y.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vexa {

/// A function of the C maths library, or a macro of its header that is called like a function.
struct MathFunction {
    std::string_view name;
    int arguments = 1;
    /// True if the result is an integer.
    bool integer = false;
    /// True if the first argument is an order n; the running time is proportional to n.
    bool order = false;
};

/// A constant of the maths header.
struct MathConstant {
    std::string_view name;
    bool integer = false;
};

/// Returns all functions that take and return numbers only. Each exists for double, for float (name
/// + f) and for long double (name + l).
std::span<const MathFunction> MathFunctions();
/// Returns the macros, whose arguments may be of any floating type.
std::span<const MathFunction> MathMacros();
std::span<const MathConstant> MathConstants();

/// Returns the function or macro called `name`, or null. A function is also found with the suffix f
/// or l.
const MathFunction* FindMathFunction(std::string_view name);
const MathConstant* FindMathConstant(std::string_view name);

/// Returns the reason for refusing a word that is not a known name.
std::string UnknownName(std::string_view word);
/// Returns the reason for refusing an invalid order.
std::string OrderFault(const MathFunction& function);

} // namespace vexa
