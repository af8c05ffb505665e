// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/Relief.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vexa {

namespace {

/// The height of a value of 1 in the landscape, a square of side 2.
constexpr float kHighestGround = 0.45F;
/// The share of the picture's smaller side that a length of 1 takes, so that the diagonal fits in
/// with a margin.
constexpr float kUnit = 0.34F;
/// The background colour, and the brightness of ground at height 0 in full light.
constexpr uint32 kSky = 0xff101012;
constexpr float kGround = 72;
/// The unit vector (u, v, up) towards the light.
constexpr float kLightFrom[3] = {-0.42F, 0.42F, 0.805F};
constexpr float kShadow = 0.35F;
/// The tolerance in depth with which a line on the ground counts as visible although it lies
/// slightly below the drawn surface.
constexpr float kOnGround = 0.04F;

uint32 ColorOf(float height, float light) {
    const float level = std::abs(height);
    const auto strong = static_cast<uint32>(light * (kGround + (255 - kGround) * level));
    const auto weak = static_cast<uint32>(light * kGround * (1 - level));
    return height > 0 ? 0xff000000 | weak << 16 | weak << 8 | strong
                      : 0xff000000 | strong << 16 | weak << 8 | weak;
}

} // namespace

void Relief::Take(const PlaneField& field, Brightness curve) {
    area = field.Area();
    const std::vector<float>& values = field.Values();
    const float strongest = curve == Brightness::Strongest ? StrongestOf(values) : 0;
    std::transform(values.begin(), values.end(), heights.begin(), [&](float value) {
        return std::copysign(BrightnessOf(curve, std::abs(value), strongest), value);
    });
}

/// Projects a point into the picture. u and v are -1..1, to the right and up in the flat picture; h
/// is the height, -1..1.
Relief::Corner Relief::Project(float u, float v, float h) const {
    const float right = u * cosine - v * sine;
    const float away = u * sine + v * cosine;
    const float up = h * kHighestGround;
    return {static_cast<float>(columns - 1) / 2 + unit * right,
            static_cast<float>(rows - 1) / 2 - unit * (away * rise + up * tilt),
            away * tilt - up * rise};
}

void Relief::Draw(const ReliefLook& look, int width, int height, uint32* words) {
    columns = width;
    rows = height;
    unit = kUnit * static_cast<float>(std::min(width, height));
    sine = std::sin(look.turn);
    cosine = std::cos(look.turn);
    rise = std::sin(look.height);
    tilt = std::cos(look.height);
    const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    depths.assign(size, std::numeric_limits<float>::infinity());
    std::fill_n(words, size, kSky);

    constexpr float kStep = 2.0F / kCells;
    std::vector<Corner> above, below;
    for (int row = 0; row <= kCells; row++) {
        above.swap(below);
        below.clear();
        const float v = 1 - kStep * static_cast<float>(row);
        for (int column = 0; column <= kCells; column++)
            below.push_back(
                Project(kStep * static_cast<float>(column) - 1, v, HeightAt(column, row)));
        if (row == 0)
            continue;
        for (int column = 0; column < kCells; column++) {
            const float corners[] = {HeightAt(column, row - 1), HeightAt(column + 1, row - 1),
                                     HeightAt(column, row), HeightAt(column + 1, row)};
            // The cell's slopes to the right and up.
            const float along = (corners[1] + corners[3] - corners[0] - corners[2]) / 2;
            const float across = (corners[0] + corners[1] - corners[2] - corners[3]) / 2;
            const float toU = along * kHighestGround / kStep, toV = across * kHighestGround / kStep;
            const float lit = (kLightFrom[2] - toU * kLightFrom[0] - toV * kLightFrom[1]) /
                              std::sqrt(1 + toU * toU + toV * toV);
            const float light = kShadow + (1 - kShadow) * std::clamp(lit, 0.0F, 1.0F);
            const uint32 color =
                ColorOf((corners[0] + corners[1] + corners[2] + corners[3]) / 4, light);
            const auto at = static_cast<std::size_t>(column);
            Fill(above[at], above[at + 1], below[at], color, words);
            Fill(above[at + 1], below[at + 1], below[at], color, words);
        }
    }
}

/// Draws the triangle where nothing drawn before is nearer. A pixel is inside if its centre is,
/// edges included.
void Relief::Fill(const Corner& a, const Corner& b, const Corner& c, uint32 color, uint32* words) {
    const float area2 = (b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y);
    if (area2 == 0)
        return;
    const auto [left, right] = std::minmax({a.x, b.x, c.x});
    const auto [top, bottom] = std::minmax({a.y, b.y, c.y});
    const int firstColumn = std::max(0, static_cast<int>(std::ceil(left)));
    const int lastColumn = std::min(columns - 1, static_cast<int>(std::floor(right)));
    const int firstRow = std::max(0, static_cast<int>(std::ceil(top)));
    const int lastRow = std::min(rows - 1, static_cast<int>(std::floor(bottom)));
    for (int y = firstRow; y <= lastRow; y++) {
        const float py = static_cast<float>(y);
        for (int x = firstColumn; x <= lastColumn; x++) {
            const float px = static_cast<float>(x);
            const float toB = ((px - a.x) * (c.y - a.y) - (c.x - a.x) * (py - a.y)) / area2;
            const float toC = ((b.x - a.x) * (py - a.y) - (px - a.x) * (b.y - a.y)) / area2;
            if (toB < 0 || toC < 0 || toB + toC > 1)
                continue;
            const float depth = a.depth + toB * (b.depth - a.depth) + toC * (c.depth - a.depth);
            const std::size_t place =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
                static_cast<std::size_t>(x);
            if (depth < depths[place]) {
                depths[place] = depth;
                words[place] = color;
            }
        }
    }
}

std::optional<Relief::Place> Relief::PlaceOf(double x, double y) const {
    if (columns == 0 || area.scale <= 0)
        return std::nullopt;
    const float column = static_cast<float>((x - double(area.linkFunctionX)) / double(area.scale)) +
                         area.linkScreenX * static_cast<float>(area.columns);
    const float row = static_cast<float>((double(area.linkFunctionY) - y) / double(area.scale)) +
                      (1 - area.linkScreenY) * static_cast<float>(area.rows);
    if (!(column >= 0 && column <= kCells && row >= 0 && row <= kCells))
        return std::nullopt;
    const int left = std::min(static_cast<int>(column), kCells - 1);
    const int top = std::min(static_cast<int>(row), kCells - 1);
    const float along = column - static_cast<float>(left);
    const float down = row - static_cast<float>(top);
    const float height =
        (HeightAt(left, top) * (1 - along) + HeightAt(left + 1, top) * along) * (1 - down) +
        (HeightAt(left, top + 1) * (1 - along) + HeightAt(left + 1, top + 1) * along) * down;
    const Corner place = Project(2 * column / kCells - 1, 1 - 2 * row / kCells, height);
    const int px = std::clamp(static_cast<int>(std::lround(place.x)), 0, columns - 1);
    const int py = std::clamp(static_cast<int>(std::lround(place.y)), 0, rows - 1);
    const float seen = depths[static_cast<std::size_t>(py) * static_cast<std::size_t>(columns) +
                              static_cast<std::size_t>(px)];
    return Place{{place.x, place.y}, place.depth <= seen + kOnGround};
}

} // namespace vexa
