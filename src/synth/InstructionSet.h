// The instruction sets that loops are compiled for, and the best of them that this machine has.
//
// A file in a folder "loops" is compiled once for each (vexa_loops in cmake/VexaLibrary.cmake) and
// defines a table of its loops each time.
#pragma once

#include <cstddef>
#include <span>

namespace vexa {

/// Later ones include earlier ones. AVX2 comes with fused operations here, as in every machine that
/// has it.
enum class InstructionSet { baseline, avx2, avx512 };

/// Any thread.
InstructionSet BestInstructionSet() noexcept;

/// The tables that this machine can run, the fastest last, of `all` in the order of the sets.
template<typename Table>
std::span<const Table* const> Runnable(std::span<const Table* const> all) noexcept {
    return all.first(static_cast<std::size_t>(BestInstructionSet()) + 1);
}

} // namespace vexa
