// SPDX-License-Identifier: GPL-3.0-or-later
// Reads PNG and JPEG files as brightness.
#pragma once

#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kits {

/// The greatest width and height of a picture in pixels.
constexpr int32 kMostPictureSide = 4096;
/// The greatest size of a file: enough for incompressible pixels of 8 bytes each, and 32 MiB of
/// other data.
constexpr std::size_t kMostPictureBytes = std::size_t{160} << 20;

/// The brightness of each pixel, row by row from the top left.
struct BrightnessMap {
    int32 width = 0;
    int32 height = 0;
    /// width * height values from -1 (black) to 1 (white).
    ///
    /// Colours are converted to the luma of ITU-R BT.601-7, 2.5.1: 0.299 R + 0.587 G + 0.114 B of
    /// the values in the file. This is also the Y of JPEG files (ITU-T T.871, 7), so a picture has
    /// the same values in both formats. The luma is not rounded: all 16 bits of a channel count.
    /// Colour profiles and gamma are ignored. Transparency scales the value towards 0, which is the
    /// value of fully transparent pixels.
    std::vector<float> values;
};

/// Returns true if the first bytes of a file, at least eight, are the signature of one of the two
/// formats.
bool IsPicture(std::string_view beginning);

/// Decodes the picture in the bytes of a file and turns it upright by its EXIF orientation. The
/// error gives the reason and, if the bytes are damaged, the place of the fault in them. Memory is
/// allocated only after the sides have been checked against kMostPictureSide; if there is too
/// little, std::bad_alloc is thrown. The values are the same on every machine. Any thread.
Result<BrightnessMap> DecodePicture(std::string_view bytes);

/// Reads the picture in the regular file at `path`, whose content decides the format. The error
/// names the file and the reason, which may be a lack of memory. Any thread.
Result<BrightnessMap> ReadPicture(const std::filesystem::path& path);

} // namespace kits
