// SPDX-License-Identifier: GPL-3.0-or-later
// Picture files, PNG and JPEG, read as brightness.
#pragma once

#include "kits/support/Result.h"
#include "kits/support/SupportDefs.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kits {

/// The most pixels that a side may have.
constexpr int32 kMostPictureSide = 4096;
/// The longest file: of pixels of 8 bytes that could not be compressed, and as much again as one
/// may say beside them.
constexpr std::size_t kMostPictureBytes = std::size_t{160} << 20;

/// How bright each pixel is, row after row from the top left.
struct BrightnessMap {
    int32 width = 0;
    int32 height = 0;
    /// width * height values from -1, black, to 1, white.
    ///
    /// Colours count by the luma of ITU-R BT.601-7, 2.5.1: 0.299 R + 0.587 G + 0.114 B of the
    /// values in the file, which is what a JPEG file has as its Y (ITU-T T.871, 7), so that a
    /// picture is the same in both formats. It is not rounded: 16 bits of a channel count in full.
    /// Colour profiles and gamma do not count. What is not opaque is nearer to 0 by that much:
    /// where there is nothing of the picture the value is 0.
    std::vector<float> values;
};

/// True where a file with these first bytes, eight or more, is meant to be one of the two formats.
bool IsPicture(std::string_view beginning);

/// Decodes the picture in the bytes of a file, turned as its EXIF orientation tells. The error says
/// what is wrong and, where it is the bytes, at which of them. Memory is taken only when the sides
/// are known to be no longer than kMostPictureSide; where there is too little it throws
/// std::bad_alloc. The values are the same on every machine. Any thread.
Result<BrightnessMap> DecodePicture(std::string_view bytes);

/// Reads the picture in the regular file at `path`; its content decides the format. The error names
/// the file and the fault; too little memory is one. Any thread.
Result<BrightnessMap> ReadPicture(const std::filesystem::path& path);

} // namespace kits
