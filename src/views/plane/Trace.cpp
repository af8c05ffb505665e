// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/plane/Trace.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace vexa {

namespace {

constexpr int kTile = 32;
/// The time in which a line fades to 1 / e, in seconds.
constexpr float kFadeTime = 1.0F / 6;
/// Lines with an end farther away than this, in pixels, are ignored.
constexpr float kFarthest = 3e4F;

/// Returns the pixel with each of its four bytes multiplied by weight / 256, 0 <= weight <= 256.
uint32 Scaled(uint32 pixel, uint32 weight) {
    const uint32 even = (pixel & 0xff00ff) * weight >> 8 & 0xff00ff;
    const uint32 odd = (pixel >> 8 & 0xff00ff) * weight & 0xff00ff00;
    return even | odd;
}

/// Returns the larger value of each of the four bytes.
uint32 Brighter(uint32 a, uint32 b) {
    using Bytes [[gnu::vector_size(4)]] = uint8;
    const auto x = std::bit_cast<Bytes>(a), y = std::bit_cast<Bytes>(b);
    return std::bit_cast<uint32>(x > y ? x : y);
}

/// Returns x rounded down, for |x| < 2 kFarthest.
int Floor(float x) {
    constexpr int kAbove = 1 << 16;
    return static_cast<int>(x + kAbove) - kAbove;
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

void Trace::Line(BPoint from, BPoint to, rgb_color bright, float width) {
    if (!IsNear(from) || !IsNear(to))
        return;
    const uint32 opaque =
        0xff000000U | uint32{bright.red} << 16 | uint32{bright.green} << 8 | uint32{bright.blue};
    const uint32 full = Scaled(opaque, bright.alpha == 255 ? 256U : bright.alpha);
    // `along` is the coordinate that changes more, `across` the other one.
    const bool steep = std::abs(to.y - from.y) > std::abs(to.x - from.x);
    if (steep) {
        std::swap(from.x, from.y);
        std::swap(to.x, to.y);
    }
    if (from.x > to.x)
        std::swap(from, to);
    const int alongs = steep ? rows : columns;
    const int acrosses = steep ? columns : rows;
    const int stepAlong = steep ? columns : 1;
    const int stepAcross = steep ? 1 : columns;
    const int tileAlong = steep ? tilesAcross : 1;
    const int tileAcross = steep ? 1 : tilesAcross;
    const float slope = to.x > from.x ? (to.y - from.y) / (to.x - from.x) : 0.0F;
    const float half = width / 2 * std::sqrt(1 + slope * slope);
    const int start = std::max(0, Floor(from.x + 0.5F));
    const int end = std::min(Floor(to.x + 0.5F), alongs - 1);
    // From here on pixel n covers the range from n to n + 1.
    float low = from.y + slope * (static_cast<float>(start) - from.x) + 0.5F - half;
    for (int along = start; along <= end; along++, low += slope) {
        const float high = low + 2 * half;
        const int lowest = Floor(low), highest = Floor(high);
        uint32* const line = &pixels[static_cast<std::size_t>(along * stepAlong)];
        const auto put = [&](int across, uint32 color) {
            if (across < 0 || across >= acrosses)
                return;
            uint32& pixel = line[across * stepAcross];
            pixel = Brighter(pixel, color);
        };
        const auto part = [full](float coverage) {
            return Scaled(full, static_cast<uint32>(256 * std::clamp(coverage, 0.0F, 1.0F)));
        };
        if (lowest == highest) {
            put(lowest, part(2 * half));
        } else {
            put(lowest, part(static_cast<float>(lowest + 1) - low));
            for (int across = lowest + 1; across < highest; across++)
                put(across, full);
            put(highest, part(high - static_cast<float>(highest)));
        }
        for (const int across : {lowest, highest}) {
            if (across >= 0 && across < acrosses)
                tiles[static_cast<std::size_t>(along / kTile * tileAlong +
                                               across / kTile * tileAcross)] = {true, true};
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
