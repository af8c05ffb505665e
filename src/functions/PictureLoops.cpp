// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/PictureLoops.h"

#include "kits/maths/LoopTables.h"
#include "synth/InstructionSet.h"

namespace vexa {

VEXA_LOOP_TABLES(PictureLoops, kPictureLoops);

std::span<const PictureLoops* const> RunnablePictureLoops() {
    return Runnable<PictureLoops>(kPictureLoops);
}

} // namespace vexa
