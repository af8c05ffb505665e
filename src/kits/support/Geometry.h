// Points and rectangles in view coordinates.
#pragma once

#include "kits/support/SupportDefs.h"

#include <cmath>

struct BPoint {
    float x = 0;
    float y = 0;
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
    bool operator==(const BRect&) const = default;
};
