#include "synth/PlaneFunction.h"

#include <algorithm>
#include <cmath>

namespace vexa {

float Heard(float value) {
    return std::isfinite(value) ? std::clamp(value, -kMostHeard, kMostHeard) : 0.0F;
}

float nullfunc(float, float) {
    return 0.0F;
}

float dummyfunction(float x, float y) {
    const long double X = x;
    const long double Y = y;
    const long double denominator = 1 + X * X + Y * Y;
    const auto v = static_cast<float>((Y - X) * (5 * X * Y + 2.7L) / (denominator * denominator));
    if (v > 1.0F)
        return 1.0F;
    if (v < -1.0F)
        return -1.0F;
    return v;
}

} // namespace vexa
