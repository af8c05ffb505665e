// SPDX-License-Identifier: GPL-3.0-or-later
// The operations that a program consists of.
#pragma once

#include "formula/Types.h"

#include <cstddef>

namespace vexa::formula {

/// An operation takes lanes of one type, unless told otherwise. What C leaves undefined is defined
/// here: sums, differences, products and left shifts of integers wrap around; x / 0 and x % 0 are
/// 0, and the lowest number divided by -1 is itself, the remainder 0; a shift's count is taken
/// modulo the number of bits.
enum class Op : unsigned char {
    /// One of the program's constants, or of what it is given.
    Constant,
    Input,

    // These take any type.
    Copy,
    Add,
    Subtract,
    Multiply,
    Divide,
    Negate,
    /// The four comparisons give an Int, 0 or 1.
    Less,
    LessEqual,
    Equal,
    NotEqual,
    /// Gives a ? b : c with a condition a of Int.
    Select,
    /// These convert to the type that they name. A number with a fraction is cut off to a whole one
    /// and limited to what int, long or unsigned long holds, and NaN is 0. To unsigned, and from a
    /// negative number to unsigned long, it goes by way of long, of which the low bits stay.
    ToInt,
    ToUnsigned,
    ToLong,
    ToUnsignedLong,
    ToFloat,
    ToDouble,

    // These take integers.
    Remainder,
    And,
    Or,
    Xor,
    Not,
    /// The count b is an Int.
    ShiftLeft,
    ShiftRight,
    /// These take an Int and give what is left of it in a narrower type.
    ToSignedChar,
    ToUnsignedChar,
    ToShort,
    ToUnsignedShort,

    // These take Float and Double. They are exact, or rounded once.
    Absolute,
    CopySign,
    Floor,
    Ceiling,
    Truncate,
    /// These round to the nearest whole number: the first takes halves away from 0, the second to
    /// the even one.
    Round,
    RoundEven,
    SquareRoot,
    Maximum,
    Minimum,
    FusedMultiplyAdd,
    /// These do some operations in one pass, each rounded: a b + c, a b - c, -a b - c, c - a b, a b
    /// c; of Double a b + c as a Float; and of Float c a / b, with a constant c of Double and in
    /// double precision, as a Float. A program puts them together, a graph has none of them.
    ProductAndSum,
    ProductLess,
    NegativeLess,
    LessProduct,
    ProductOfThree,
    SumAsFloat,
    QuotientAsFloat,
    /// Towards b, which is a Double in both types.
    NextAfter,
    /// Give Int: fpclassify's number, and whether the sign is set, which it is in no NaN.
    Classify,
    SignBit,
    /// These take a Double.
    IeeeRemainder,
    /// Gives a 2^b with b of Int.
    Scale,
    Exponent,

    // These are functions of the maths library, which take a Double. In a program some take a Float
    // too, and give a Double.
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
    /// Both take as b the order, a constant of Int.
    BesselJ,
    BesselY,
};
constexpr Op kFirstMaths = Op::Modulo;
constexpr std::size_t kMathsOps =
    static_cast<std::size_t>(Op::BesselY) - static_cast<std::size_t>(kFirstMaths) + 1;
constexpr std::size_t kPlainOps = static_cast<std::size_t>(kFirstMaths);

/// The type of what an operation on lanes of `type` gives.
Type ResultOf(Op op, Type type);
/// True where a and b may be exchanged.
bool Commutes(Op op);
/// True where its loop takes constants for a or b as they are; a loop that does not is given whole
/// blocks of them.
bool TakesConstants(Op op);
/// Returns the estimated time in nanoseconds per point, on this machine's instruction set.
double CostOf(Op op, Type type);

} // namespace vexa::formula
