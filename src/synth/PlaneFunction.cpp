#include "synth/PlaneFunction.h"

namespace vexa {

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
