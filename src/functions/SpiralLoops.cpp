// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/SpiralLoops.h"

#include "synth/InstructionSet.h"

namespace vexa {

// One table per compilation of loops/SpiralLoops.cpp.
extern const SpiralLoops kBaselineSpiralLoops;
#if defined(__x86_64__)
extern const SpiralLoops kAvx2SpiralLoops;
extern const SpiralLoops kAvx512SpiralLoops;
#endif

namespace {

constexpr const SpiralLoops* kSpiralLoops[] = {
    &kBaselineSpiralLoops,
#if defined(__x86_64__)
    &kAvx2SpiralLoops,
    &kAvx512SpiralLoops,
#endif
};

} // namespace

std::span<const SpiralLoops* const> RunnableSpiralLoops() {
    return Runnable<SpiralLoops>(kSpiralLoops);
}

} // namespace vexa
