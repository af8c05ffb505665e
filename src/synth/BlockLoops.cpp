// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/BlockLoops.h"

#include "synth/InstructionSet.h"

namespace vexa {

// One table per compilation of loops/BlockLoops.cpp.
extern const BlockLoops kBaselineBlockLoops;
#if defined(__x86_64__)
extern const BlockLoops kAvx2BlockLoops;
extern const BlockLoops kAvx512BlockLoops;
#endif

namespace {

constexpr const BlockLoops* kAll[] = {
    &kBaselineBlockLoops,
#if defined(__x86_64__)
    &kAvx2BlockLoops,
    &kAvx512BlockLoops,
#endif
};

const BlockLoops& chosen = *RunnableLoops().back();

} // namespace

std::span<const BlockLoops* const> RunnableLoops() {
    return Runnable<BlockLoops>(kAll);
}

const BlockLoops& Loops() {
    return chosen;
}

} // namespace vexa
