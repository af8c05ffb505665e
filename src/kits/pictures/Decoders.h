// SPDX-License-Identifier: GPL-3.0-or-later
// The decoders of the two formats, and their common parts.
#pragma once

#include "kits/pictures/PictureFile.h"

#include <csetjmp>
#include <cstring>
#include <optional>

namespace kits {

/// A picture as it is stored in the file, before it is turned upright.
struct Decoded {
    BrightnessMap map;
    /// The orientation in EXIF's numbering, 1..8.
    int orientation = 1;
};

Result<Decoded> DecodePng(std::string_view bytes);
Result<Decoded> DecodeJpeg(std::string_view bytes);

/// Allocates a map of that size, or returns an error if a side is longer than kMostPictureSide.
Result<BrightnessMap> MapOf(std::size_t width, std::size_t height);

/// Returns the luma of BrightnessMap, -1..1, for channels from 0 to `most`, which is 255 or 65535.
template<class Channel>
double Luma(Channel red, Channel green, Channel blue, double most) {
    return (2 * (299.0 * red + 587.0 * green + 114.0 * blue) - 1000 * most) / (1000 * most);
}

/// The target of the long jump by which a C library gives up, as its error callback must not
/// return.
class Landing {
  public:
    /// Calls `step`, which calls the library. Returns false if the library gave up. No objects with
    /// destructors may be alive in `step` when the library gives up, because their destructors
    /// would not run.
    template<class Step>
    bool Try(const Step& step) {
        if (setjmp(place) != 0)
            return false;
        step();
        return true;
    }
    /// Ends the present Try. It is to be called from the library's error callback, which must not
    /// return. `at` is the byte of the file that the library has reached.
    [[noreturn]] void GiveUp(const char* reason, std::size_t at) {
        std::strncpy(text, reason, sizeof text - 1);
        byte = at;
        std::longjmp(place, 1);
    }
    /// Returns the reason and the place in the file, once the library has given up.
    Error Fault() const { return {"at byte " + std::to_string(byte) + ": " + text}; }

  private:
    std::jmp_buf place{};
    char text[256] = "";
    std::size_t byte = 0;
};

} // namespace kits
