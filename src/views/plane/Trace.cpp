// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/Trace.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr int kTile = 32;
/// In which a line fades to 1 / e, seconds.
constexpr float kFadeTime = 1.0F / 6;
/// Farther away than this, in pixels, a line's end is not looked for.
constexpr float kFarthest = 1e5F;

/// All four bytes of the pixel times weight / 256, 0 <= weight <= 256.
uint32 Scaled(uint32 pixel, uint32 weight) {
    const uint32 even = (pixel & 0xff00ff) * weight >> 8 & 0xff00ff;
    const uint32 odd = (pixel >> 8 & 0xff00ff) * weight & 0xff00ff00;
    return even | odd;
}

/// The larger of each of the four bytes.
uint32 Brighter(uint32 a, uint32 b) {
    uint32 both = 0;
    for (uint32 mask = 0xff; mask; mask <<= 8)
        both |= std::max(a & mask, b & mask);
    return both;
}

bool IsNear(BPoint p) {
    return std::abs(p.x) < kFarthest && std::abs(p.y) < kFarthest;
}

} // namespace

Trace::Trace(int columns, int rows)
    : columns(columns),
      rows(rows),
      tilesAcross((columns + kTile - 1) / kTile),
      pixels(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)),
      tiles(static_cast<std::size_t>(tilesAcross) *
            static_cast<std::size_t>((rows + kTile - 1) / kTile)) {}

/// Calls each(first, count) for the pixels of each of the tile's rows.
template<class Each>
void Trace::ForEachRow(std::size_t tile, Each each) {
    const int index = static_cast<int>(tile);
    const int left = index % tilesAcross * kTile;
    const int top = index / tilesAcross * kTile;
    const auto count = static_cast<std::size_t>(std::min(kTile, columns - left));
    for (int y = top; y < std::min(top + kTile, rows); y++)
        each(static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
                 static_cast<std::size_t>(left),
             count);
}

void Trace::Fade(float seconds) {
    const auto weight = static_cast<uint32>(256 * std::exp(-seconds / kFadeTime));
    for (std::size_t i = 0; i < tiles.size(); i++) {
        if (!tiles[i].lit)
            continue;
        uint32 any = 0;
        ForEachRow(i, [&](std::size_t first, std::size_t count) {
            for (uint32* p = &pixels[first]; p != &pixels[first] + count; p++) {
                *p = Scaled(*p, weight);
                any |= *p;
            }
        });
        tiles[i] = {any != 0, true};
    }
}

void Trace::Clear() {
    for (std::size_t i = 0; i < tiles.size(); i++) {
        if (!tiles[i].lit)
            continue;
        ForEachRow(i, [&](std::size_t first, std::size_t count) {
            std::fill_n(&pixels[first], count, 0U);
        });
        tiles[i] = {false, true};
    }
}

bool Trace::IsDark() const {
    return std::none_of(tiles.begin(), tiles.end(), [](const Tile& tile) { return tile.lit; });
}

void Trace::Put(int x, int y, uint32 color, float coverage) {
    if (x < 0 || x >= columns || y < 0 || y >= rows || coverage <= 0)
        return;
    const std::size_t place = static_cast<std::size_t>(y) * static_cast<std::size_t>(columns) +
                              static_cast<std::size_t>(x);
    pixels[place] = Brighter(pixels[place], Scaled(color, static_cast<uint32>(256 * coverage)));
    tiles[static_cast<std::size_t>(y / kTile * tilesAcross + x / kTile)] = {true, true};
}

void Trace::Line(BPoint from, BPoint to, rgb_color color, float width) {
    if (!IsNear(from) || !IsNear(to))
        return;
    const uint32 opaque =
        0xff000000U | uint32{color.red} << 16 | uint32{color.green} << 8 | uint32{color.blue};
    const uint32 full = Scaled(opaque, color.alpha == 255 ? 256U : color.alpha);
    // Along the coordinate that grows more, across by the other.
    const bool steep = std::abs(to.y - from.y) > std::abs(to.x - from.x);
    if (steep) {
        std::swap(from.x, from.y);
        std::swap(to.x, to.y);
    }
    if (from.x > to.x)
        std::swap(from, to);
    const float slope = to.x > from.x ? (to.y - from.y) / (to.x - from.x) : 0.0F;
    const float half = width / 2 * std::sqrt(1 + slope * slope);
    const int end = std::min(static_cast<int>(std::lround(to.x)), (steep ? rows : columns) - 1);
    for (int along = std::max(0, static_cast<int>(std::lround(from.x))); along <= end; along++) {
        const float middle = from.y + slope * (static_cast<float>(along) - from.x);
        const int last = static_cast<int>(std::ceil(middle + half));
        for (int across = static_cast<int>(std::floor(middle - half)); across <= last; across++) {
            const auto center = static_cast<float>(across);
            const float coverage =
                std::min(center + 0.5F, middle + half) - std::max(center - 0.5F, middle - half);
            steep ? Put(across, along, full, coverage) : Put(along, across, full, coverage);
        }
    }
}

void Trace::ShowAll() {
    for (Tile& tile : tiles)
        tile.changed = true;
}

BRect Trace::Show(const uint32* base, uint32* shown) {
    BRect extent = {static_cast<float>(columns), static_cast<float>(rows), -1, -1};
    for (std::size_t i = 0; i < tiles.size(); i++) {
        if (!tiles[i].changed)
            continue;
        tiles[i].changed = false;
        const auto left = static_cast<float>(static_cast<int>(i) % tilesAcross * kTile);
        const auto top = static_cast<float>(static_cast<int>(i) / tilesAcross * kTile);
        extent = {std::min(extent.left, left), std::min(extent.top, top),
                  std::max(extent.right, left + kTile - 1),
                  std::max(extent.bottom, top + kTile - 1)};
        ForEachRow(i, [&](std::size_t first, std::size_t count) {
            for (std::size_t p = first; p < first + count; p++) {
                const uint32 line = pixels[p];
                const uint32 behind = 256 - (line >> 24) - (line >> 31);
                shown[p] = line ? (line + Scaled(base[p], behind)) | 0xff000000U : base[p];
            }
        });
    }
    return extent;
}

} // namespace vexa
