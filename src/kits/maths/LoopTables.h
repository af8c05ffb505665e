// SPDX-License-Identifier: GPL-3.0-or-later
// The tables of loops that are compiled once for each instruction set (vexa_loops in
// cmake/VexaLibrary.cmake).
//
// A build may compile them for one set only (VEXA_ONE_SET), which it calls the baseline.
#pragma once

#include <array>

// VEXA_LOOP_TABLES(Type, name): `name` is an array of pointers to the tables of that type, in the
// order of the sets. To stand in the namespace of the type.
#if defined(VEXA_SEVERAL_SETS)
#define VEXA_LOOP_TABLES(Type, name)                                                               \
    extern const Type kBaseline##Type, kAvx2##Type, kAvx512##Type;                                 \
    static constexpr std::array name = {&kBaseline##Type, &kAvx2##Type, &kAvx512##Type}
#else
#define VEXA_LOOP_TABLES(Type, name)                                                               \
    extern const Type kBaseline##Type;                                                             \
    static constexpr std::array name = {&kBaseline##Type}
#endif
