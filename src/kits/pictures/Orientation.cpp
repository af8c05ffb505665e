// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/pictures/Orientation.h"

#include <utility>

namespace kits {

namespace {

constexpr std::size_t kTag = 0x0112;
constexpr std::size_t kShort = 3;
/// The size of an entry, and the offset of its value within it, in bytes.
constexpr std::size_t kEntry = 12;
constexpr std::size_t kValue = 8;

} // namespace

int OrientationOf(std::string_view exif) {
    const bool isLittle = exif.starts_with("II");
    if (!isLittle && !exif.starts_with("MM"))
        return 1;
    // Reads a number of `count` bytes; beyond the end of the data it is 0.
    const auto number = [&](std::size_t at, std::size_t count) {
        std::size_t value = 0;
        if (at > exif.size() || count > exif.size() - at)
            return value;
        for (std::size_t i = 0; i < count; i++)
            value =
                value << 8 | static_cast<unsigned char>(exif[at + (isLittle ? count - 1 - i : i)]);
        return value;
    };
    const std::size_t directory = number(4, 4);
    const std::size_t entries = number(directory, 2);
    for (std::size_t i = 0; i < entries; i++) {
        const std::size_t entry = directory + 2 + i * kEntry;
        if (number(entry, 2) != kTag || number(entry + 2, 2) != kShort)
            continue;
        const std::size_t orientation = number(entry + kValue, 2);
        return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1;
    }
    return 1;
}

BrightnessMap Upright(BrightnessMap map, int orientation) {
    if (orientation == 1)
        return map;
    // The orientations from 1 on say at which edges of the upright picture the first row and the
    // first column of the file lie: top left, top right, bottom right, bottom left, left top, right
    // top, right bottom, left bottom.
    const bool swapsSides = orientation >= 5;
    const bool fromLastRow =
        orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    const bool fromLastColumn =
        orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    BrightnessMap upright{swapsSides ? map.height : map.width, swapsSides ? map.width : map.height,
                          std::vector<float>(map.values.size())};
    float* target = upright.values.data();
    for (int32 y = 0; y < upright.height; y++) {
        for (int32 x = 0; x < upright.width; x++) {
            const int32 along = swapsSides ? y : x;
            const int32 down = swapsSides ? x : y;
            const int32 column = fromLastColumn ? map.width - 1 - along : along;
            const int32 row = fromLastRow ? map.height - 1 - down : down;
            *target++ =
                map.values[static_cast<std::size_t>(row) * static_cast<std::size_t>(map.width) +
                           static_cast<std::size_t>(column)];
        }
    }
    return upright;
}

} // namespace kits
