// SPDX-License-Identifier: GPL-3.0-or-later
// The instruction sets for which loops are compiled, and the best of them on this machine.
//
// A file in a folder "loops" is compiled once for each (vexa_loops in cmake/VexaLibrary.cmake) and
// defines a table of its loops each time.
#pragma once

#include "kits/support/Result.h"

#include <cstddef>
#include <span>

namespace vexa {

/// Each set includes the earlier ones. `avx2` includes the fused operations (FMA), which every
/// machine with AVX2 has.
enum class InstructionSet { baseline, avx2, avx512 };

/// The environment variable that limits the instruction set to "baseline", "avx2" or "avx512", so
/// that sets can be compared on one machine.
constexpr const char* kInstructionSetVariable = "VEXA_INSTRUCTION_SET";

/// Returns the best set of this machine up to the limit in the environment. Any thread.
InstructionSet BestInstructionSet() noexcept;

/// Checks that the environment sets no limit, or names a set that this machine has. A program
/// reports an error and exits; BestInstructionSet ignores an invalid limit. Any thread.
kits::Result<void> CheckInstructionSet();

/// Returns the tables that this program may run, the fastest last. `all` is in the order of the
/// sets.
template<typename Table>
std::span<const Table* const> Runnable(std::span<const Table* const> all) noexcept {
    return all.first(static_cast<std::size_t>(BestInstructionSet()) + 1);
}

} // namespace vexa
