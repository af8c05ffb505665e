// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/maths/VectorMaths.h"

namespace kits {

// One table per compilation of loops/VectorMaths.cpp.
extern const VectorMaths kBaselineVectorMaths;
#if defined(__x86_64__)
extern const VectorMaths kAvx2VectorMaths;
extern const VectorMaths kAvx512VectorMaths;
#endif

namespace {

constexpr const VectorMaths* kAll[] = {
    &kBaselineVectorMaths,
#if defined(__x86_64__)
    &kAvx2VectorMaths,
    &kAvx512VectorMaths,
#endif
};

} // namespace

std::span<const VectorMaths* const> AllVectorMaths() {
    return kAll;
}

} // namespace kits
