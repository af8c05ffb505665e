// SPDX-License-Identifier: GPL-3.0-or-later
// The operations of a program over blocks of points, compiled once per instruction set.
//
// All instruction sets give the same bits, except for the payloads of NaNs: every operation is
// exact, rounded as IEEE 754 defines it, composed of such operations and fused only where a product
// is exact, or one of SLEEF's deterministic functions.
#pragma once

#include "formula/Operations.h"

#include <cstddef>
#include <span>

namespace vexa::formula {

/// The number of points in a group. A block consists of whole groups.
constexpr std::size_t kLanes = 16;

/// Computes to[i] = the operation's result for a[i], b[i] and c[i]. `count` is a multiple of
/// kLanes. An operand that the operation does not take is ignored. `to` does not overlap with the
/// operands. Any thread, real-time safe.
using Loop = void (*)(const void* a, const void* b, const void* c, void* to, std::size_t count);

/// States which operand, if any, is one number for all lanes.
enum class Constants : unsigned char { None, First, Second, Third };
constexpr std::size_t kForms = 4;

struct PlainLoops {
    /// A loop is null if the operation does not exist for the type, or not in that form.
    Loop loops[kPlainOps][kTypes][kForms];
};

struct MathsLoops {
    Loop loops[kMathsOps];
    /// The loops that take Floats and convert them to Double; null where no such loop exists.
    Loop ofFloats[kMathsOps];
};

/// The loops for one instruction set.
struct FormulaLoops {
    const PlainLoops* plain;
    const MathsLoops* maths;

    Loop Find(Op op, Type type, Constants constants) const {
        const auto row = static_cast<std::size_t>(op);
        if (op >= kFirstMaths)
            return (type == Type::Float ? maths->ofFloats : maths->loops)[row - kPlainOps];
        return plain
            ->loops[row][static_cast<std::size_t>(type)][static_cast<std::size_t>(constants)];
    }
};

/// Returns the loops for each instruction set that this machine can run, the fastest last.
std::span<const FormulaLoops> RunnableFormulaLoops();

} // namespace vexa::formula
