#include "synth/InstructionSet.h"

namespace vexa {

InstructionSet BestInstructionSet() noexcept {
#if defined(__x86_64__)
    __builtin_cpu_init();
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    if (avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw"))
        return InstructionSet::avx512;
    if (avx2)
        return InstructionSet::avx2;
#endif
    return InstructionSet::baseline;
}

} // namespace vexa
