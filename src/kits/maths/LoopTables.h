// SPDX-License-Identifier: GPL-3.0-or-later
// The tables of the loops that are compiled once per instruction set (vexa_loops in
// cmake/VexaLibrary.cmake).
//
// A build may compile them for one set only (VEXA_ONE_SET), which is then called the baseline.
#pragma once

#include <array>

// VEXA_LOOP_TABLES(Type, name) defines `name` as an array of pointers to the tables of that type,
// in the order of the instruction sets. It must be used in the namespace of the type.
#if defined(VEXA_SEVERAL_SETS)
#define VEXA_LOOP_TABLES(Type, name)                                                               \
    extern const Type kBaseline##Type, kAvx2##Type, kAvx512##Type;                                 \
    static constexpr std::array name = {&kBaseline##Type, &kAvx2##Type, &kAvx512##Type}
#else
#define VEXA_LOOP_TABLES(Type, name)                                                               \
    extern const Type kBaseline##Type;                                                             \
    static constexpr std::array name = {&kBaseline##Type}
#endif
