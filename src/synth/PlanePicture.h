// The picture of a plane function.
#pragma once

#include "kits/support/SupportDefs.h"
#include "synth/PlaneFunction.h"

#include <cstddef>

namespace vexa {

/// Which rectangle of the plane a picture shows. The pixel in column c and row r shows
///
///     x = linkFunctionX + c scale - linkScreenX columns scale,
///     y = linkFunctionY - r scale + (1 - linkScreenY) rows scale.
struct PlaneArea {
    /// A point of the plane, and where it is shown, in fractions of the picture's width from the
    /// left and of its height from the bottom.
    float linkFunctionX, linkFunctionY;
    float linkScreenX, linkScreenY;
    /// Plane units per pixel.
    float scale;
    std::size_t columns, rows;
};

/// Writes the pixels' words, one row after the other. A pixel's word is v = f 255 without
/// fraction where v > 0, else -v in the red byte; values beyond +-1 carry into the next byte, and
/// end at the largest float below 2^31. A value that is not finite is shown as 0.
///
/// Where the first rows say that it takes long, all cores compute the rest. f is then called in
/// threads of this function's own, but not after it has returned, so what the caller may call, they
/// may. Not the media thread.
void DrawPlane(const PlaneFunction& f, const PlaneArea& area, uint32* words);

} // namespace vexa
