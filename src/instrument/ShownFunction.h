// SPDX-License-Identifier: GPL-3.0-or-later
// The function that the plane shows in place of one that differs from note to note.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/PlaneFunction.h"

#include <array>
#include <cstddef>

namespace vexa {

/// A function of x and y alone: another function with its inputs at fixed values.
class VEXA_REALTIME ShownFunction final : public PlaneSource {
  public:
    ShownFunction(const PlaneFunction& f, const std::array<float, kMostInputs>& values);

    float At(float x, float y, const float*) const noexcept override;
    void Evaluate(const float* x, const float* y, const float* const*, float* values,
                  std::size_t count) const noexcept override;

  private:
    static constexpr std::size_t kPiece = 256;

    const PlaneFunction f;
    const std::array<float, kMostInputs> inputs;
    /// The values of each input over a piece of kPiece points, and pointers to them.
    std::array<std::array<float, kPiece>, kMostInputs> pieces;
    std::array<const float*, kMostInputs> arrays;
};

} // namespace vexa
