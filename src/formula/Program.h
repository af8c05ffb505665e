// SPDX-License-Identifier: GPL-3.0-or-later
// A program is a graph as a list of instructions over blocks of points.
#pragma once

#include "formula/FormulaLoops.h"
#include "formula/Graph.h"
#include "kits/support/RealtimeMark.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vexa::formula {

/// A program is immutable. The intermediate values of a block lie in kWorkspace bytes on the stack,
/// which stay in the processor's nearest caches. The block is processed in pieces; the more values
/// are needed at a time, the shorter are the pieces.
class Program {
  public:
    static constexpr std::size_t kWorkspace = 65536;

    /// Makes the program that computes `root`, a Float, by `loops`. Returns nothing if it needs
    /// more values at a time than the workspace holds for kLanes points.
    static std::optional<Program> Of(const Graph& graph, Value root, const FormulaLoops& loops);

    /// Returns the inputs on which the root depends, beside x and y.
    VEXA_REALTIME const std::vector<FunctionInput>& Inputs() const { return inputs; }

    /// Computes values[i] = the root at x = from[0][i], y = from[1][i], where the k-th of Inputs()
    /// is from[2 + k][i]. Any thread, real-time safe.
    VEXA_REALTIME void Run(const float* const* from, float* values,
                           std::size_t count) const noexcept;

    /// Returns the estimated nanoseconds per point.
    double Cost() const { return cost; }
    std::size_t Length() const { return instructions.size(); }

  private:
    /// The place of an operand: `offset` bytes after base number `base`. The bases are the
    /// workspace, the constants, the result and the inputs.
    struct Place {
        std::uint32_t base = 0, offset = 0;
    };
    struct Instruction {
        Loop loop;
        Place to, a, b, c;
    };
    class Writer;

    static constexpr std::uint32_t kWork = 0, kConstant = 1, kResult = 2, kInput = 3;
    /// The number of bases: the workspace, the constants, the result, x, y and the function's
    /// inputs.
    static constexpr std::size_t kBases = kInput + 2 + kMostInputs;

    VEXA_REALTIME void RunPiece(void* const* bases, std::size_t count) const noexcept;

    std::vector<Instruction> instructions;
    std::vector<std::uint64_t> constants;
    std::vector<FunctionInput> inputs;
    /// The number of points in a piece.
    std::size_t piece = 0;
    double cost = 0;
};

} // namespace vexa::formula
