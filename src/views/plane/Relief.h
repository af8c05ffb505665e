// SPDX-License-Identifier: GPL-3.0-or-later
// A relief is a plane function as a landscape.
#pragma once

#include "kits/support/Geometry.h"
#include "kits/support/SupportDefs.h"
#include "views/plane/Brightness.h"
#include "views/plane/PlaneField.h"

#include <optional>
#include <vector>

namespace vexa {

/// The direction from which the landscape is looked at, in radians: turned about the upright, and
/// from the horizon (0) up to straight down (pi / 2).
struct ReliefLook {
    float turn = 0.6F;
    float height = 0.75F;
};

/// Values as heights over a part of the plane, in parallel projection: what is blue in the flat
/// picture stands up, what is red lies low, as high as it would be bright. Window thread.
///
/// A picture takes a few milliseconds, whatever the function: about kCells^2 pieces of ground and
/// the picture's pixels.
class Relief {
  public:
    /// How many pieces of ground there are along each side.
    static constexpr int kCells = 128;

    /// Takes the landscape of the values, which have kCells + 1 columns and rows.
    void Take(const PlaneField& field, Brightness curve);

    /// Draws it into a picture of so many pixels, and keeps how far away what each shows is.
    void Draw(const ReliefLook& look, int columns, int rows, uint32* words);

    /// The place of a point of the plane in the last picture that was drawn, and whether it can be
    /// seen there or lies behind a hill. Nothing for a point beside the landscape.
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
        return heights[static_cast<std::size_t>(row * (kCells + 1) + column)];
    }

    PlaneArea area{};
    std::vector<float> heights = std::vector<float>((kCells + 1) * (kCells + 1));

    // The size of the last picture in pixels.
    int columns = 0, rows = 0;
    float unit = 0, sine = 0, cosine = 1, rise = 0, tilt = 1;
    std::vector<float> depths;
};

} // namespace vexa
