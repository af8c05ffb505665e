// SPDX-License-Identifier: GPL-3.0-or-later
// A picture file on the plane; the brightness is the height of the terrain.
#pragma once

#include "kits/pictures/PictureFile.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Result.h"
#include "synth/PlaneFunction.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vexa {

/// A loaded picture of at least one pixel. All functions that play it share it.
using Picture = std::shared_ptr<const kits::BrightnessMap>;

/// The plane function of a picture: black is -1, white 1. The picture lies upright, y upwards, with
/// its centre at the origin; its longer side spans -5..5. Values between the centres of pixels are
/// interpolated bilinearly; a point outside these has the value of the nearest point of the edge. A
/// coordinate that is NaN counts as the left or the upper edge.
class PictureTerrain final : public PlaneSource {
  public:
    explicit PictureTerrain(Picture picture);

    VEXA_REALTIME float At(float x, float y, const float*) const noexcept override;
    /// Computes the same bits as At, over arrays, by PictureLoops.
    VEXA_REALTIME void Evaluate(const float* x, const float* y, const float* const*, float* values,
                                std::size_t count) const noexcept override;

  private:
    const Picture picture;
};

/// The text of the alert for a file that cannot be loaded.
constexpr const char* kPictureAlert = "Could not load picture";

/// Reads a picture file. The error has the alert kPictureAlert; its text names the file and the
/// fault. Waits for the disk, so it must not run in the media or the MIDI thread.
kits::Result<Picture> LoadPicture(const std::filesystem::path& path);

} // namespace vexa
