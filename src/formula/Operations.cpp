// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/Operations.h"

#include "synth/InstructionSet.h"

#include <algorithm>
#include <array>

namespace vexa::formula {

namespace {

/// Nanoseconds per point with AVX2 at 2.4 GHz, in blocks of 256 points, for 32-bit lanes if the
/// operation has them (benchmarks/FormulaBenchmark, "Operation").
struct OperationCost {
    Op op;
    float nanoseconds;
    /// True if the operation computes one value after the other, so that wider vectors do not help.
    bool single = false;
};

/// An operation that is not listed costs as much as a sum. The rows of conversions are for
/// floating-point numbers.
constexpr auto kCosts = std::to_array<OperationCost>({
    {Op::Constant, 0},
    {Op::Input, 0},
    {Op::Divide, 0.15F},
    {Op::QuotientAsFloat, 0.6F},
    {Op::Remainder, 2},
    {Op::ToInt, 0.3F},
    {Op::ToUnsigned, 0.8F},
    {Op::ToLong, 0.8F},
    {Op::ToUnsignedLong, 0.8F},
    {Op::SquareRoot, 0.2F},
    {Op::Classify, 1},
    {Op::NextAfter, 5, true},
    {Op::IeeeRemainder, 13, true},
    {Op::Scale, 6.5F, true},
    {Op::Exponent, 3.5F, true},
    {Op::Modulo, 1},
    {Op::Sin, 1.5F},
    {Op::Cos, 1.5F},
    {Op::Exp, 1.5F},
    {Op::Log, 3.2F},
    {Op::Pow, 15},
    {Op::Tanh, 2.9F},
    {Op::Atan, 3.5F},
    {Op::Atan2, 4.2F},
    {Op::Tan, 6},
    {Op::Asin, 4.5F},
    {Op::Acos, 4.8F},
    {Op::Sinh, 7.8F},
    {Op::Cosh, 8.4F},
    {Op::Asinh, 20},
    {Op::Acosh, 18},
    {Op::Atanh, 9},
    {Op::Exp2, 2.6F},
    {Op::Expm1, 6.2F},
    {Op::Log2, 5},
    {Op::Log10, 5},
    {Op::Log1p, 5.3F},
    {Op::Cbrt, 10},
    {Op::Hypot, 8.5F},
    {Op::Erf, 18},
    {Op::Erfc, 22},
    {Op::TGamma, 42},
    {Op::LGamma, 43},
    {Op::BesselJ, 110, true},
    {Op::BesselY, 125, true},
});
constexpr float kSum = 0.08F;

/// Returns the operation whose row holds the cost of `op` for lanes of `type`.
Op RowOf(Op op, Type type) {
    if (IsFloating(type))
        return op;
    const bool conversion = op >= Op::ToInt && op <= Op::ToDouble;
    return op == Op::Divide ? Op::Remainder : conversion ? Op::Copy : op;
}

} // namespace

Type ResultOf(Op op, Type type) {
    switch (op) {
    case Op::Less:
    case Op::LessEqual:
    case Op::Equal:
    case Op::NotEqual:
    case Op::Classify:
    case Op::SignBit:
    case Op::ToInt:
        return Type::Int;
    case Op::ToUnsigned:
        return Type::Unsigned;
    case Op::ToLong:
        return Type::Long;
    case Op::ToUnsignedLong:
        return Type::UnsignedLong;
    case Op::ToFloat:
        return Type::Float;
    case Op::ToDouble:
        return Type::Double;
    default:
        return type;
    }
}

bool Commutes(Op op) {
    switch (op) {
    case Op::Add:
    case Op::Multiply:
    case Op::And:
    case Op::Or:
    case Op::Xor:
    case Op::Equal:
    case Op::NotEqual:
        return true;
    default:
        return false;
    }
}

bool TakesConstants(Op op) {
    return (op < kFirstMaths && op != Op::Copy && op != Op::Select && op != Op::FusedMultiplyAdd) ||
           op == Op::BesselJ || op == Op::BesselY;
}

double CostOf(Op op, Type type) {
    const auto found =
        std::find_if(kCosts.begin(), kCosts.end(),
                     [op, type](const OperationCost& row) { return row.op == RowOf(op, type); });
    const OperationCost row = found == kCosts.end() ? OperationCost{op, kSum} : *found;
    if (row.single)
        return row.nanoseconds;
    const double width = IsWide(type) && op < kFirstMaths ? 2 : 1;
    // The baseline is 2.2 to 3.3 times slower by measurement; AVX-512 is assumed to be twice as
    // fast.
    constexpr std::array kSlower = {2.5, 1.0, 0.5};
    return row.nanoseconds * width * kSlower[static_cast<std::size_t>(BestInstructionSet())];
}

} // namespace vexa::formula
