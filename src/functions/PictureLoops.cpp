// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/PictureLoops.h"

#include "synth/InstructionSet.h"

namespace vexa {

// One table per compilation of loops/PictureLoops.cpp.
extern const PictureLoops kBaselinePictureLoops;
#if defined(__x86_64__)
extern const PictureLoops kAvx2PictureLoops;
extern const PictureLoops kAvx512PictureLoops;
#endif

namespace {

constexpr const PictureLoops* kPictureLoops[] = {
    &kBaselinePictureLoops,
#if defined(__x86_64__)
    &kAvx2PictureLoops,
    &kAvx512PictureLoops,
#endif
};

} // namespace

std::span<const PictureLoops* const> RunnablePictureLoops() {
    return Runnable<PictureLoops>(kPictureLoops);
}

} // namespace vexa
