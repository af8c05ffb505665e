// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/FormulaLoops.h"

#include "synth/InstructionSet.h"

namespace vexa::formula {

// One table per compilation of loops/PlainLoops.cpp and loops/MathsLoops.cpp.
extern const PlainLoops kBaselinePlainLoops;
extern const MathsLoops kBaselineMathsLoops;
#if defined(__x86_64__)
extern const PlainLoops kAvx2PlainLoops;
extern const MathsLoops kAvx2MathsLoops;
extern const PlainLoops kAvx512PlainLoops;
extern const MathsLoops kAvx512MathsLoops;
#endif

namespace {

constexpr FormulaLoops kAll[] = {
    {&kBaselinePlainLoops, &kBaselineMathsLoops},
#if defined(__x86_64__)
    {&kAvx2PlainLoops, &kAvx2MathsLoops},
    {&kAvx512PlainLoops, &kAvx512MathsLoops},
#endif
};

} // namespace

std::span<const FormulaLoops> RunnableFormulaLoops() {
    return std::span(kAll).first(static_cast<std::size_t>(BestInstructionSet()) + 1);
}

} // namespace vexa::formula
