// SPDX-License-Identifier: GPL-3.0-or-later
// A compiled expression, loaded as an add-on.
#pragma once

#include "kits/kernel/Image.h"
#include "kits/support/RealtimeMark.h"
#include "synth/PlaneFunction.h"

#include <optional>
#include <string>

namespace vexa {

/// Owns a loaded add-on and calls the functions that it exports. The last owner unloads the add-on,
/// and must therefore not be the media or the MIDI thread; kits::Published ensures that.
class FunctionAddon final : public PlaneSource {
  public:
    /// Takes over a loaded add-on; the destructor unloads it.
    explicit FunctionAddon(image_id image);
    ~FunctionAddon() override;

    /// Returns whether the add-on exports r2rfun. Otherwise the function must not be called.
    bool HasPointForm() const { return point; }
    /// Returns whether the add-on exports r2rfunblock, which computes blocks of points.
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
