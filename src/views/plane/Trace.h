// SPDX-License-Identifier: GPL-3.0-or-later
// Bright, fading lines over a picture.
#pragma once

#include "kits/interface/InterfaceDefs.h"
#include "kits/support/Geometry.h"

#include <cstddef>
#include <vector>

namespace vexa {

/// Antialiased lines in a layer of their own, which costs time only where there are lines. Where
/// lines cross, the brighter value counts in each of red, green and blue. Whole coordinates are the
/// centres of pixels. Window thread.
class Trace {
  public:
    Trace(int columns, int rows);

    /// Fades all lines as in `seconds` of time: to 1/e, about a third, in a sixth of a second.
    void Fade(float seconds);
    /// Draws a line of a width below kWidest; the alpha of `color` is its brightness. A line with
    /// an end far beyond all screens, or not a number, is ignored.
    static constexpr float kWidest = 20;
    void Line(BPoint from, BPoint to, rgb_color color, float width);
    /// Clears all lines at once, without fading.
    void Clear();
    /// Returns true if nothing is visible.
    bool IsDark() const;

    /// Writes the opaque picture `base` with the lines over it into `shown`, both of this size,
    /// where the lines have changed since the last call. Returns the extent of these changes, empty
    /// (right < left) if there are none.
    BRect Show(const uint32* base, uint32* shown);
    /// Makes the next Show write everything.
    void ShowAll();

  private:
    /// A square of pixels. Unless it is lit, all of them are dark.
    struct Tile {
        bool lit = false;
        bool changed = true;
    };

    template<class Each>
    void ForEachRow(std::size_t tile, Each each);

    int columns, rows;
    int tilesAcross;
    /// The pixels, with premultiplied blue, green and red, and alpha.
    std::vector<uint32> pixels;
    std::vector<Tile> tiles;
};

} // namespace vexa
