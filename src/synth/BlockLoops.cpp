// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/BlockLoops.h"

#include "kits/maths/LoopTables.h"
#include "synth/InstructionSet.h"

namespace vexa {

VEXA_LOOP_TABLES(BlockLoops, kAll);

namespace {

const BlockLoops& chosen = *RunnableLoops().back();

} // namespace

std::span<const BlockLoops* const> RunnableLoops() {
    return Runnable<BlockLoops>(kAll);
}

const BlockLoops& Loops() {
    return chosen;
}

} // namespace vexa
