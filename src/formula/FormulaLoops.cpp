// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/FormulaLoops.h"

#include "kits/maths/LoopTables.h"
#include "synth/InstructionSet.h"

#include <array>

namespace vexa::formula {

VEXA_LOOP_TABLES(PlainLoops, kPlainLoops);
VEXA_LOOP_TABLES(MathsLoops, kMathsLoops);

namespace {

constexpr auto kAll = [] {
    std::array<FormulaLoops, kPlainLoops.size()> all{};
    for (std::size_t i = 0; i < all.size(); i++)
        all[i] = {kPlainLoops[i], kMathsLoops[i]};
    return all;
}();

} // namespace

std::span<const FormulaLoops> RunnableFormulaLoops() {
    return std::span(kAll).first(static_cast<std::size_t>(BestInstructionSet()) + 1);
}

} // namespace vexa::formula
