// SPDX-License-Identifier: GPL-3.0-or-later
// The names that an expression may use besides x and y.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace vexa {

/// A function, or a macro that is used like one, of the C maths library.
struct MathFunction {
    std::string_view name;
    int arguments = 1;
    /// True where its result is an integer.
    bool integer = false;
    /// True where its first argument is an order n to which its running time is proportional.
    bool order = false;
};

/// A constant of the maths header.
struct MathConstant {
    std::string_view name;
    bool integer = false;
};

/// Functions that exist for double, for float (name + f) and for long double (name + l); all that
/// take and return numbers only.
std::span<const MathFunction> MathFunctions();
/// Macros for arguments of any floating type.
std::span<const MathFunction> MathMacros();
std::span<const MathConstant> MathConstants();

/// Returns the function or macro called `name`, a function also with an f or l at its end; or null.
const MathFunction* FindMathFunction(std::string_view name);
const MathConstant* FindMathConstant(std::string_view name);

/// Returns why a word is refused that is none of them.
std::string UnknownName(std::string_view word);
/// Returns why an order is refused that is none.
std::string OrderFault(const MathFunction& function);

} // namespace vexa
