#include "synth/BlockLoops.h"

namespace vexa {

// One table per compilation of loops/BlockLoops.cpp.
extern const BlockLoops kBaselineLoops;
#if defined(__x86_64__)
extern const BlockLoops kAvx2Loops;
extern const BlockLoops kAvx512Loops;
#endif

namespace {

const BlockLoops& Choose() {
#if defined(__x86_64__)
    __builtin_cpu_init();
    const bool fused = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    if (fused && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw"))
        return kAvx512Loops;
    if (fused)
        return kAvx2Loops;
#endif
    return kBaselineLoops;
}

const BlockLoops& chosen = Choose();

} // namespace

const BlockLoops& Loops() {
    return chosen;
}

} // namespace vexa
