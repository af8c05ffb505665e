// SPDX-License-Identifier: GPL-3.0-or-later
// A plane function drawn as a landscape.
#pragma once

#include "kits/support/Geometry.h"
#include "kits/support/SupportDefs.h"
#include "views/plane/Brightness.h"
#include "views/plane/PlaneField.h"

#include <optional>
#include <vector>

namespace vexa {

/// The direction of the view onto the landscape in radians: the rotation about the vertical axis,
/// and the elevation from the horizon (0) up to straight down (pi / 2).
struct ReliefLook {
    float turn = 0.6F;
    float height = 0.75F;
};

/// Shows values as heights over a part of the plane, in parallel projection. Values that are blue
/// in the flat picture rise and red ones sink, by their brightness there. Window thread.
///
/// A picture takes a few milliseconds whatever the function, for about kCells^2 cells of ground and
/// the picture's pixels.
class Relief {
  public:
    /// The number of cells of ground along each side.
    static constexpr int kCells = 128;

    /// Takes the heights from the values, which have kCells + 1 columns and rows.
    void Take(const PlaneField& field, Brightness curve);

    /// Draws the landscape into a picture of columns x rows pixels, and keeps the depth of each
    /// pixel for PlaceOf.
    void Draw(const ReliefLook& look, int columns, int rows, uint32* words);

    /// A point of the plane in the last drawn picture: its position, and whether it is visible or
    /// hidden behind a hill. PlaceOf returns nothing for a point outside the landscape.
    struct Place {
        BPoint point;
        bool visible;
    };
    std::optional<Place> PlaceOf(double x, double y) const;

  private:
    struct Corner {
        float x, y, depth;
    };

    Corner Project(float u, float v, float h) const;
    void Fill(const Corner& a, const Corner& b, const Corner& c, uint32 color, uint32* words);
    float HeightAt(int column, int row) const {
        const int place = row * (kCells + 1) + column;
        return heights[static_cast<std::size_t>(place)];
    }

    PlaneArea area{};
    std::vector<float> heights = std::vector<float>((kCells + 1) * (kCells + 1));

    // The size of the last drawn picture in pixels.
    int columns = 0, rows = 0;
    float unit = 0, sine = 0, cosine = 1, rise = 0, tilt = 1;
    std::vector<float> depths;
};

} // namespace vexa
