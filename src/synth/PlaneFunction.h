// A sound: a real function of the plane.
#pragma once

#include <cstddef>

namespace vexa {

/// f(x, y). May be called from any thread at any time; must not block, allocate or throw.
using PointFunction = float (*)(float x, float y);

/// f over arrays: values[i] = f(x[i], y[i]) for 0 <= i < count. The arrays do not overlap.
/// Otherwise as PointFunction.
using BlockFunction = void (*)(const float* x, const float* y, float* values, std::size_t count);

/// A plane function in its two forms. The block form may be missing.
struct PlaneFunction {
    PointFunction point = nullptr;
    BlockFunction block = nullptr;

    bool operator==(const PlaneFunction&) const = default;
    float operator()(float x, float y) const { return point(x, y); }

    /// values[i] = f(x[i], y[i]), by the block form where there is one.
    void Evaluate(const float* x, const float* y, float* values, std::size_t count) const {
        if (block) {
            block(x, y, values, count);
            return;
        }
        for (std::size_t i = 0; i < count; i++)
            values[i] = point(x[i], y[i]);
    }
};

/// What a value of f counts for in the sound: bounded to this on either side. A low-cut filter's
/// sums grow to some 8000 times its input (note 0 at 44100 samples per second), and stay finite.
constexpr float kMostHeard = 1e30F;
/// The value as it is heard; 0 for what is not finite.
float Heard(float value);

/// 0 everywhere.
float nullfunc(float x, float y);

/// (y - x)(5xy + 2.7) / (1 + x^2 + y^2)^2, limited to -1..1; a NaN passes through.
float dummyfunction(float x, float y);

} // namespace vexa
