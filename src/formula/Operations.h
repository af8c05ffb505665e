// SPDX-License-Identifier: GPL-3.0-or-later
// The operations of which a program consists.
#pragma once

#include "formula/Types.h"

#include <cstddef>

namespace vexa::formula {

/// The operands of an operation are lanes of one type, unless stated otherwise. Cases that C leaves
/// undefined are defined here: sums, differences, products and left shifts of integers wrap around;
/// x / 0 and x % 0 are 0; the lowest number divided by -1 is itself, with the remainder 0; the
/// count of a shift is taken modulo the number of bits.
enum class Op : unsigned char {
    /// A constant or an input of the program.
    Constant,
    Input,

    // The following take any type.
    Copy,
    Add,
    Subtract,
    Multiply,
    Divide,
    Negate,
    /// The four comparisons return an Int, 0 or 1.
    Less,
    LessEqual,
    Equal,
    NotEqual,
    /// Returns a ? b : c, where the condition `a` is an Int.
    Select,
    /// The conversions to the named type. A floating-point number is truncated and limited to the
    /// range of int, long or unsigned long; NaN becomes 0. The conversion to unsigned, and that of
    /// a negative number to unsigned long, goes through long and keeps its low bits.
    ToInt,
    ToUnsigned,
    ToLong,
    ToUnsignedLong,
    ToFloat,
    ToDouble,

    // The following take integers.
    Remainder,
    And,
    Or,
    Xor,
    Not,
    /// The count `b` of both shifts is an Int.
    ShiftLeft,
    ShiftRight,
    /// These four take an Int and convert it to a narrower type; the result is an Int.
    ToSignedChar,
    ToUnsignedChar,
    ToShort,
    ToUnsignedShort,

    // The following take Float or Double. They are exact, or rounded once.
    Absolute,
    CopySign,
    Floor,
    Ceiling,
    Truncate,
    /// Both round to the nearest whole number: Round rounds halves away from 0, RoundEven to the
    /// even neighbour.
    Round,
    RoundEven,
    SquareRoot,
    Maximum,
    Minimum,
    FusedMultiplyAdd,
    /// Each of these computes several operations in one pass and rounds each of them: a b + c, a b
    /// - c, -a b - c, c - a b and a b c; for Double, a b + c as a Float; for Float, c a / b as a
    /// Float, with a constant c of Double, in double precision. A program joins operations into
    /// these; a graph contains none.
    ProductAndSum,
    ProductLess,
    NegativeLess,
    LessProduct,
    ProductOfThree,
    SumAsFloat,
    QuotientAsFloat,
    /// Returns the neighbour of a in the direction of b, which is a Double for both types.
    NextAfter,
    /// Both return an Int: the number that fpclassify returns, and 1 if the sign bit is set. A NaN
    /// counts as positive.
    Classify,
    SignBit,
    /// The following take a Double.
    IeeeRemainder,
    /// Returns a 2^b, where b is an Int.
    Scale,
    Exponent,

    // The functions of the maths library, which take a Double. In a program some have a form that
    // takes a Float and returns a Double.
    Modulo,
    Sin,
    Cos,
    Exp,
    Log,
    Pow,
    Tanh,
    Atan,
    Atan2,
    Tan,
    Asin,
    Acos,
    Sinh,
    Cosh,
    Asinh,
    Acosh,
    Atanh,
    Exp2,
    Expm1,
    Log2,
    Log10,
    Log1p,
    Cbrt,
    Hypot,
    Erf,
    Erfc,
    TGamma,
    LGamma,
    /// For both, `b` is the order, a constant of Int.
    BesselJ,
    BesselY,
};
constexpr Op kFirstMaths = Op::Modulo;
constexpr std::size_t kMathsOps =
    static_cast<std::size_t>(Op::BesselY) - static_cast<std::size_t>(kFirstMaths) + 1;
constexpr std::size_t kPlainOps = static_cast<std::size_t>(kFirstMaths);

/// Returns the result type of an operation of a graph on operands of `type`.
Type ResultOf(Op op, Type type);
/// Returns true if a and b may be exchanged.
bool Commutes(Op op);
/// Returns true if the operation's loop takes a constant operand as a single number. Any other loop
/// takes it as a block filled with the number.
bool TakesConstants(Op op);
/// Returns the estimated nanoseconds per point on this machine's instruction set.
double CostOf(Op op, Type type);

} // namespace vexa::formula
