// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/Brightness.h"

#include "synth/BlockLoops.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace vexa {

namespace {

constexpr BrightnessRow kCurves[] = {
    {Brightness::Linear, "Linear", "linear"},
    {Brightness::SquareRoot, "Square root", "root"},
    {Brightness::Logarithmic, "Logarithmic", "logarithmic"},
    {Brightness::Strongest, "Up to the strongest", "strongest"},
};

/// The reciprocal of the least size that the logarithmic curve shows.
constexpr float kLogarithmRange = 4096;
/// StrongestOf samples one of this many values.
constexpr std::size_t kStride = 13;

} // namespace

std::span<const BrightnessRow> BrightnessCurves() {
    return kCurves;
}

float BrightnessOf(Brightness curve, float size, float strongest) {
    if (!std::isfinite(size))
        return 0;
    switch (curve) {
    case Brightness::Linear:
        break;
    case Brightness::SquareRoot:
        size = std::sqrt(size);
        break;
    case Brightness::Logarithmic:
        size = 1 + std::log(std::max(size, 1 / kLogarithmRange)) / std::log(kLogarithmRange);
        break;
    case Brightness::Strongest:
        size = strongest > 0 ? size / strongest : 0;
        break;
    }
    return std::min(size, 1.0F);
}

float StrongestOf(std::span<const float> values) {
    std::vector<float> sizes;
    sizes.reserve(values.size() / kStride + 1);
    for (std::size_t i = 0; i < values.size(); i += kStride) {
        if (std::isfinite(values[i]))
            sizes.push_back(std::abs(values[i]));
    }
    if (sizes.empty())
        return 0;
    const auto place = sizes.begin() + static_cast<std::ptrdiff_t>(sizes.size() * 98 / 100);
    std::nth_element(sizes.begin(), place, sizes.end());
    return *place;
}

void ShowValues(Brightness curve, std::span<const float> values, uint32* words) {
    if (curve == Brightness::Linear) {
        Loops().Words(values.data(), words, values.size());
        return;
    }
    const float strongest = curve == Brightness::Strongest ? StrongestOf(values) : 0;
    std::transform(values.begin(), values.end(), words, [&](float value) {
        const auto level =
            static_cast<uint32>(255 * BrightnessOf(curve, std::abs(value), strongest));
        return value > 0 ? level : level << 16;
    });
}

} // namespace vexa
