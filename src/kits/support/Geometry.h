// SPDX-License-Identifier: GPL-3.0-or-later
// Points and rectangles in view coordinates.
#pragma once

#include "kits/support/SupportDefs.h"

#include <cmath>

struct BPoint {
    float x = 0;
    float y = 0;
    bool operator==(const BPoint&) const = default;
};

/// A rectangle whose edges belong to it: (0, 0, 9, 9) covers ten by ten pixels and is 9 wide.
struct BRect {
    float left = 0;
    float top = 0;
    float right = -1;
    float bottom = -1;

    float Width() const { return right - left; }
    float Height() const { return bottom - top; }
    int32 IntegerWidth() const { return static_cast<int32>(std::ceil(Width())); }
    int32 IntegerHeight() const { return static_cast<int32>(std::ceil(Height())); }
    BPoint LeftTop() const { return {left, top}; }
    bool Contains(BPoint p) const {
        return left <= p.x && p.x <= right && top <= p.y && p.y <= bottom;
    }
    /// Returns true if the rectangles share a point.
    bool Intersects(const BRect& other) const {
        return left <= other.right && other.left <= right && top <= other.bottom &&
               other.top <= bottom;
    }
    BRect OffsetByCopy(float x, float y) const {
        return {left + x, top + y, right + x, bottom + y};
    }
    BRect OffsetToCopy(float x, float y) const { return {x, y, x + Width(), y + Height()}; }
    /// Moves the edges inwards, or outwards for negative values.
    BRect InsetByCopy(float x, float y) const { return {left + x, top + y, right - x, bottom - y}; }
    bool operator==(const BRect&) const = default;
};
