// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/ShownFunction.h"

#include <algorithm>

namespace vexa {

ShownFunction::ShownFunction(const PlaneFunction& f, const std::array<float, kMostInputs>& values)
    : f(f), inputs(values) {
    for (std::size_t k = 0; k < kMostInputs; k++) {
        pieces[k].fill(values[k]);
        arrays[k] = pieces[k].data();
    }
}

float ShownFunction::At(float x, float y, const float*) const noexcept {
    return f.Source().At(x, y, inputs.data());
}

void ShownFunction::Evaluate(const float* x, const float* y, const float* const*, float* values,
                             std::size_t count) const noexcept {
    for (std::size_t i = 0; i < count; i += kPiece)
        f.Source().Evaluate(x + i, y + i, arrays.data(), values + i, std::min(kPiece, count - i));
}

} // namespace vexa
