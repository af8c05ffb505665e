// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/maths/VectorMaths.h"

#include "kits/maths/LoopTables.h"

namespace kits {

VEXA_LOOP_TABLES(VectorMaths, kAll);

std::span<const VectorMaths* const> AllVectorMaths() {
    return kAll;
}

} // namespace kits
