// SPDX-License-Identifier: GPL-3.0-or-later
// Fails if bytes give neither a picture that is in range everywhere, nor a reason.

#include "functions/PictureFunction.h"
#include "fuzz/Fuzzing.h"

#include <cmath>

extern "C" int LLVMFuzzerTestOneInput(const uint8* data, std::size_t size) {
    kits::Result<kits::BrightnessMap> map = kits::DecodePicture(fuzz::Text(data, size));
    if (!map) {
        fuzz::Require(!map.Fault().text.empty(), "a fault has a reason");
        return 0;
    }
    const auto pixels =
        static_cast<std::size_t>(map->width) * static_cast<std::size_t>(map->height);
    fuzz::Require(pixels > 0 && map->values.size() == pixels, "each pixel has a value");
    for (const float value : map->values)
        fuzz::Require(std::abs(value) <= 1, "a pixel is in range");
    const vexa::PlaneFunction f = std::make_shared<vexa::PictureTerrain>(
        std::make_shared<const kits::BrightnessMap>(*std::move(map)));
    for (const float at : {0.0F, 0.01F, -1.7F, 4.99F, 1e9F})
        fuzz::Require(std::abs(f(at, -at / 2)) <= 1.001F, "the terrain is in range");
    return 0;
}
