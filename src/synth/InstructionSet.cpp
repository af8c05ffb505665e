// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/InstructionSet.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace vexa {

namespace {

/// The names in the order of the sets.
constexpr std::array<std::string_view, 3> kNames{"baseline", "avx2", "avx512"};

/// Returns the best instruction set of this machine for which the loops are compiled.
InstructionSet BestOfMachine() noexcept {
#if defined(VEXA_SEVERAL_SETS)
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

const char* Asked() noexcept {
    return std::getenv(kInstructionSetVariable);
}

/// Returns the set that the environment asks for, if this machine has it.
std::optional<InstructionSet> Allowed() noexcept {
    const char* const asked = Asked();
    const auto best = static_cast<std::size_t>(BestOfMachine());
    for (std::size_t i = 0; asked && i <= best; i++) {
        if (kNames[i] == asked)
            return static_cast<InstructionSet>(i);
    }
    return std::nullopt;
}

} // namespace

InstructionSet BestInstructionSet() noexcept {
    static const InstructionSet best = Allowed().value_or(BestOfMachine());
    return best;
}

kits::Result<void> CheckInstructionSet() {
    if (!Asked() || Allowed())
        return {};
    std::string names;
    for (std::size_t i = 0; i <= static_cast<std::size_t>(BestOfMachine()); i++)
        names += std::string(i > 0 ? ", " : "") + std::string(kNames[i]);
    std::string fault = kInstructionSetVariable;
    fault.append(" is \"").append(Asked()).append("\"; this machine has ").append(names);
    return kits::Error{fault};
}

} // namespace vexa
