// SPDX-License-Identifier: GPL-3.0-or-later
// Draws a plane function as a picture.
#pragma once

#include "kits/support/SupportDefs.h"
#include "synth/PlaneFunction.h"

#include <chrono>
#include <cstddef>
#include <memory>

namespace vexa {

/// The rectangle of the plane that a picture shows. The pixel in column c and row r shows
///
///     x = linkFunctionX + c scale - linkScreenX columns scale,
///     y = linkFunctionY - r scale + (1 - linkScreenY) rows scale.
struct PlaneArea {
    /// A point of the plane, and its position in the picture, in fractions of the width from the
    /// left and of the height from the bottom.
    float linkFunctionX, linkFunctionY;
    float linkScreenX, linkScreenY;
    /// The plane's units per pixel.
    float scale;
    std::size_t columns, rows;
};

/// A picture that is computed in parts, so that a slow function does not block the caller. One
/// thread at a time, not the media thread.
class PlaneDrawing {
  public:
    /// `words` has room for the pixels, one row after the other, and outlives this or the last
    /// Continue. A pixel's word is v = f 255 without fraction if v > 0, else -v in the red byte;
    /// values beyond +-1 carry into the next byte, and end at the largest float below 2^31. A value
    /// that is not finite is shown as 0.
    PlaneDrawing(const PlaneFunction& f, const PlaneArea& area, uint32* words);
    /// Draws the values of f themselves instead of words.
    PlaneDrawing(const PlaneFunction& f, const PlaneArea& area, float* values);

    /// Computes for about `time`, from the top on, or until the picture is complete. Returns
    /// whether it is complete.
    ///
    /// If the first rows show that the picture takes long, all cores compute the rest. f is then
    /// called in threads of this class, but only during this call, so they may call whatever the
    /// caller may call.
    bool Continue(std::chrono::steady_clock::duration time);

  private:
    class Bands;
    class Helpers;

    std::shared_ptr<Bands> bands;
};

/// Draws the whole picture at once, however long it takes.
void DrawPlane(const PlaneFunction& f, const PlaneArea& area, uint32* words);

} // namespace vexa
