// SPDX-License-Identifier: GPL-3.0-or-later
// Bright lines over a picture that fade.
#pragma once

#include "kits/interface/InterfaceDefs.h"
#include "kits/support/Geometry.h"

#include <cstddef>
#include <vector>

namespace vexa {

/// A trace of lines is drawn with smooth edges into pixels of its own, which cost time only where a
/// line is. Where lines cross, the brighter counts in each of red, green and blue. Coordinates are
/// those of pixels' centres. Window thread.
class Trace {
  public:
    Trace(int columns, int rows);

    /// Fades all lines by what they fade in so many seconds: to a third in a sixth of a second.
    void Fade(float seconds);
    /// A line of that width, less than kWidest, whose color's alpha is how bright it is. One with
    /// an end far beyond all screens, or that is no number, is passed over.
    static constexpr float kWidest = 20;
    void Line(BPoint from, BPoint to, rgb_color color, float width);
    /// Clears all lines at once, without fading.
    void Clear();
    /// True where nothing is to be seen.
    bool IsDark() const;

    /// Puts the opaque picture `base` with the lines over it into `shown`, both of this size, where
    /// that has changed since the last call: the extent of that, empty (right < left) if there is
    /// none.
    BRect Show(const uint32* base, uint32* shown);
    /// Has the next Show show everything.
    void ShowAll();

  private:
    /// A square of pixels, all of which are dark unless it is lit.
    struct Tile {
        bool lit = false;
        bool changed = true;
    };

    template<class Each>
    void ForEachRow(std::size_t tile, Each each);

    int columns, rows;
    int tilesAcross;
    /// Each pixel has blue, green and red, each times alpha, and alpha.
    std::vector<uint32> pixels;
    std::vector<Tile> tiles;
};

} // namespace vexa
