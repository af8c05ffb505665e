// SPDX-License-Identifier: GPL-3.0-or-later
// The two formats, and what they have in common.
#pragma once

#include "kits/pictures/PictureFile.h"

#include <csetjmp>
#include <cstring>
#include <optional>

namespace kits {

/// A picture as the file has it.
struct Decoded {
    BrightnessMap map;
    /// The orientation as EXIF numbers it, 1..8.
    int orientation = 1;
};

Result<Decoded> DecodePng(std::string_view bytes);
Result<Decoded> DecodeJpeg(std::string_view bytes);

/// Makes room for the pixels, or says why there shall be none.
Result<BrightnessMap> MapOf(std::size_t width, std::size_t height);

/// The luma of BrightnessMap for channels from 0 to `most`, which is 255 or 65535.
template<class Channel>
double Luma(Channel red, Channel green, Channel blue, double most) {
    return (2 * (299.0 * red + 587.0 * green + 114.0 * blue) - 1000 * most) / (1000 * most);
}

/// A C library jumps to it when it gives up by not returning from a function of ours.
class Landing {
  public:
    /// Calls the library by a function that has no objects with destructors meanwhile, as none of
    /// them would run. False if the library gave up.
    template<class Step>
    bool Try(const Step& step) {
        if (setjmp(place) != 0)
            return false;
        step();
        return true;
    }
    /// The library's function that must not return calls it. `at` is the byte of the file that the
    /// library has come to.
    [[noreturn]] void GiveUp(const char* reason, std::size_t at) {
        std::strncpy(text, reason, sizeof text - 1);
        byte = at;
        std::longjmp(place, 1);
    }
    /// Returns why and where the library gave up, once it has.
    Error Fault() const { return {"at byte " + std::to_string(byte) + ": " + text}; }

  private:
    std::jmp_buf place{};
    char text[256] = "";
    std::size_t byte = 0;
};

} // namespace kits
