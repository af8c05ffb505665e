// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/pictures/Decoders.h"

namespace kits {

Result<BrightnessMap> MapOf(std::size_t width, std::size_t height) {
    constexpr auto kMost = static_cast<std::size_t>(kMostPictureSide);
    if (width > kMost || height > kMost)
        return Error{"it has " + std::to_string(width) + " x " + std::to_string(height) +
                     " pixels; a side may have " + std::to_string(kMost)};
    return BrightnessMap{static_cast<int32>(width), static_cast<int32>(height),
                         std::vector<float>(width * height)};
}

} // namespace kits
