// SPDX-License-Identifier: GPL-3.0-or-later
// The operations of a program over blocks of points, compiled once per instruction set.
//
// All instruction sets give the same bits, the payloads of NaNs aside: every operation is exact, or
// rounded as IEEE 754 says, or made of such ones and fused where a product is exact, or one of
// SLEEF's deterministic functions.
#pragma once

#include "formula/Operations.h"

#include <cstddef>
#include <span>

namespace vexa::formula {

/// Blocks consist of whole groups of so many lanes.
constexpr std::size_t kLanes = 16;

/// Computes to[i] = the operation on a[i], b[i] and c[i]. The count is a multiple of kLanes; an
/// operand that the operation does not take is ignored; `to` overlaps with none of the others. Any
/// thread, real-time safe.
using Loop = void (*)(const void* a, const void* b, const void* c, void* to, std::size_t count);

/// The operand, if any, that is one number for all lanes.
enum class Constants : unsigned char { None, First, Second, Third };
constexpr std::size_t kForms = 4;

struct PlainLoops {
    /// A loop is null where there is no such operation, or no such form of it.
    Loop loops[kPlainOps][kTypes][kForms];
};

struct MathsLoops {
    Loop loops[kMathsOps];
    /// These take a Float, which becomes a Double on the way; null where there is none.
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

/// Returns the loops that this machine can run, the fastest last.
std::span<const FormulaLoops> RunnableFormulaLoops();

} // namespace vexa::formula
