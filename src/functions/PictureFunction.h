// SPDX-License-Identifier: GPL-3.0-or-later
// A picture file laid on the plane: its brightness is the height of the terrain.
#pragma once

#include "kits/pictures/PictureFile.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Result.h"
#include "synth/PlaneFunction.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vexa {

/// A picture that was loaded, with a pixel at least. All that play it share it.
using Picture = std::shared_ptr<const kits::BrightnessMap>;

/// The plane function of a picture: black is -1, white 1. The picture is seen as it is, y upwards,
/// its middle at the origin; its longer side spans -5..5. Between the middles of the pixels the
/// values are bilinear, outside of these what the nearest point of the edge has. Where a coordinate
/// is not a number, the left or the upper edge counts.
class PictureTerrain final : public PlaneSource {
  public:
    explicit PictureTerrain(Picture picture);

    VEXA_REALTIME float At(float x, float y, const float*) const noexcept override;
    /// Computes what At computes, to the bit, over arrays, as PictureLoops does.
    VEXA_REALTIME void Evaluate(const float* x, const float* y, const float* const*, float* values,
                                std::size_t count) const noexcept override;

  private:
    const Picture picture;
};

/// The words of the alert about a file that cannot be loaded.
constexpr const char* kPictureAlert = "Could not load picture";

/// Reads a picture file. The error has the alert kPictureAlert, and its text names the file and the
/// fault. It waits for the disk, so neither the media nor the MIDI thread may call it.
kits::Result<Picture> LoadPicture(const std::filesystem::path& path);

} // namespace vexa
