// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/SpiralLoops.h"

#include "kits/maths/LoopTables.h"
#include "synth/InstructionSet.h"

namespace vexa {

VEXA_LOOP_TABLES(SpiralLoops, kSpiralLoops);

std::span<const SpiralLoops* const> RunnableSpiralLoops() {
    return Runnable<SpiralLoops>(kSpiralLoops);
}

} // namespace vexa
