// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/PlaneFunction.h"

#include "kits/support/RealtimeMark.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vexa {

namespace {

class PlainSource final : public PlaneSource {
  public:
    explicit PlainSource(PlaneFunction::Point point) : point(point) {}
    VEXA_REALTIME float At(float x, float y, const float*) const noexcept override {
        return point(x, y);
    }

  private:
    const PlaneFunction::Point point;
};

} // namespace

void PlaneSource::Evaluate(const float* x, const float* y, const float* const* inputs,
                           float* values, std::size_t count) const noexcept {
    std::array<float, kMostInputs> here;
    const std::size_t number = Inputs().size();
    for (std::size_t i = 0; i < count; i++) {
        for (std::size_t k = 0; k < number; k++)
            here[k] = inputs[k][i];
        values[i] = At(x[i], y[i], here.data());
    }
}

PlaneFunction::PlaneFunction(Point point) : source(std::make_shared<PlainSource>(point)) {}

float Heard(float value) {
    return std::isfinite(value) ? std::clamp(value, -kMostHeard, kMostHeard) : 0.0F;
}

float nullfunc(float, float) {
    return 0.0F;
}

float dummyfunction(float x, float y) {
    const double X = x;
    const double Y = y;
    const double denominator = 1 + X * X + Y * Y;
    const auto v = static_cast<float>((Y - X) * (5 * X * Y + 2.7) / (denominator * denominator));
    if (v > 1.0F)
        return 1.0F;
    if (v < -1.0F)
        return -1.0F;
    return v;
}

} // namespace vexa
