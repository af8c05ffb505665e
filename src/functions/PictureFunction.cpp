// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/PictureFunction.h"

#include "functions/PictureLoops.h"

#include <algorithm>
#include <new>
#include <utility>

namespace vexa {

namespace {

/// The units of the plane that the picture's longer side spans.
constexpr float kSpan = 10.0F;

const PictureLoops& pictureLoops = *RunnablePictureLoops().back();

VEXA_REALTIME PicturePlane Plane(const kits::BrightnessMap& map) {
    const auto width = static_cast<float>(map.width);
    const auto height = static_cast<float>(map.height);
    return {map.values.data(), map.width - 1,   map.height - 1, std::max(width, height) / kSpan,
            (width - 1) / 2,   (height - 1) / 2};
}

} // namespace

float PictureValue(const PicturePlane& plane, float x, float y) {
    // NaN is not above 0, so it becomes 0.
    const auto bounded = [](float place, int last) {
        return place > 0 ? std::min(place, static_cast<float>(last)) : 0.0F;
    };
    const float u = bounded(plane.column + x * plane.scale, plane.right);
    const float v = bounded(plane.row - y * plane.scale, plane.bottom);
    const auto i = static_cast<int>(u);
    const auto j = static_cast<int>(v);
    const auto pixel = [&plane](int column, int row) {
        return plane.values[std::min(row, plane.bottom) * (plane.right + 1) +
                            std::min(column, plane.right)];
    };
    const float f = u - static_cast<float>(i);
    const float g = v - static_cast<float>(j);
    const float above = (1 - f) * pixel(i, j) + f * pixel(i + 1, j);
    const float below = (1 - f) * pixel(i, j + 1) + f * pixel(i + 1, j + 1);
    return (1 - g) * above + g * below;
}

PictureTerrain::PictureTerrain(Picture shared) : picture(std::move(shared)) {}

float PictureTerrain::At(float x, float y, const float*) const noexcept {
    return PictureValue(Plane(*picture), x, y);
}

void PictureTerrain::Evaluate(const float* x, const float* y, const float* const*, float* values,
                              std::size_t count) const noexcept {
    pictureLoops.Values(Plane(*picture), x, y, values, count);
}

kits::Result<Picture> LoadPicture(const std::filesystem::path& path) try {
    kits::Result<kits::BrightnessMap> map = kits::ReadPicture(path);
    if (!map)
        return kits::Error{map.Fault().text, {kPictureAlert}};
    return std::make_shared<const kits::BrightnessMap>(*std::move(map));
} catch (const std::bad_alloc&) {
    return kits::Error{"could not read " + path.string() + ": there is not enough memory",
                       {kPictureAlert}};
}

} // namespace vexa
