// SPDX-License-Identifier: GPL-3.0-or-later
// A compiled expression that is loaded.
#pragma once

#include "kits/kernel/Image.h"
#include "kits/support/RealtimeMark.h"
#include "synth/PlaneFunction.h"

#include <optional>
#include <string>

namespace vexa {

/// Owns a loaded add-on and calls what it exports. It is unloaded with its last owner, which must
/// not be the media or the MIDI thread; kits::Published sees to that.
class FunctionAddon final : public PlaneSource {
  public:
    /// Makes a function of a loaded add-on, which it unloads with itself.
    explicit FunctionAddon(image_id image);
    ~FunctionAddon() override;

    /// It exports r2rfun, without which the function must not be called.
    bool HasPointForm() const { return point; }
    /// Returns whether the add-on computes blocks of points, by a function r2rfunblock.
    bool HasBlockForm() const { return block; }
    /// Returns the expression that r2rfunstr returns; nothing if the add-on has no such function.
    const std::optional<std::string>& Expression() const { return expression; }

    VEXA_REALTIME float At(float x, float y, const float*) const noexcept override {
        return point(x, y);
    }
    VEXA_REALTIME void Evaluate(const float* x, const float* y, const float* const* inputs,
                                float* values, std::size_t count) const noexcept override;

  private:
    using PointForm = float (*)(float x, float y);
    using BlockForm = void (*)(const float* x, const float* y, float* values, std::size_t count);

    const image_id image;
    const PointForm point;
    const BlockForm block;
    std::optional<std::string> expression;
};

} // namespace vexa
