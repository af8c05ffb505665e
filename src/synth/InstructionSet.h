// SPDX-License-Identifier: GPL-3.0-or-later
// The instruction sets that loops are compiled for, and the best of them that this machine has.
//
// A file in a folder "loops" is compiled once for each (vexa_loops in cmake/VexaLibrary.cmake) and
// defines a table of its loops each time.
#pragma once

#include "kits/support/Result.h"

#include <cstddef>
#include <span>

namespace vexa {

/// Later ones include earlier ones. AVX2 comes with fused operations here, as in every machine that
/// has it.
enum class InstructionSet { baseline, avx2, avx512 };

/// This variable of the program's environment names a set, "baseline", "avx2" or "avx512", of which
/// no later one is to be used, so that two of them can be compared.
constexpr const char* kInstructionSetVariable = "VEXA_INSTRUCTION_SET";

/// Returns the best set of this machine, but none later than the environment allows. Any thread.
InstructionSet BestInstructionSet() noexcept;

/// Checks that the environment names no set or one that this machine has. A program says the fault
/// and ends; BestInstructionSet goes on as if such an environment named none. Any thread.
kits::Result<void> CheckInstructionSet();

/// The tables that this program may run, the fastest last, of `all` in the order of the sets.
template<typename Table>
std::span<const Table* const> Runnable(std::span<const Table* const> all) noexcept {
    return all.first(static_cast<std::size_t>(BestInstructionSet()) + 1);
}

} // namespace vexa
