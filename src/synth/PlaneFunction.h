// SPDX-License-Identifier: GPL-3.0-or-later
// A plane function gives the height of the terrain at each point of the plane.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <concepts>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace vexa {

/// An input that a function may use beside the orbit's point.
struct FunctionInput {
    enum class Kind : unsigned char {
        /// One of the sound's four macros, 0..1.
        Macro,
        /// The note's velocity and key, each divided by 127.
        Velocity,
        Key,
        /// Seconds since note-on; the time continues after the release.
        Time,
        /// What Time, a 32-bit number, lacks of the time. Their sum is exact enough for quick
        /// motions in notes of any length. Directly follows Time among a function's inputs.
        TimeRest,
        /// The value of a controller, 0..1.
        Controller,
    };
    Kind kind;
    /// The number of the macro (0..3) or the controller (0..127); else 0.
    unsigned char number = 0;

    bool operator==(const FunctionInput&) const = default;
};

/// The most inputs that one function may have beside TimeRest, and with it.
constexpr std::size_t kMostNamedInputs = 16;
constexpr std::size_t kMostInputs = kMostNamedInputs + 1;

/// Returns what the 32-bit number nearest to the time lacks of it.
VEXA_REALTIME constexpr float TimeRestOf(double t) noexcept {
    return static_cast<float>(t - static_cast<double>(static_cast<float>(t)));
}

/// A source computes a plane function: a compiled expression, a built-in function, a sample, a
/// picture. It is immutable, so any number of threads and instruments may share it; it is destroyed
/// with its last owner.
class PlaneSource {
  public:
    PlaneSource() = default;
    virtual ~PlaneSource() = default;
    PlaneSource(const PlaneSource&) = delete;
    PlaneSource& operator=(const PlaneSource&) = delete;

    /// Returns the function's inputs beside x and y, at most kMostInputs. Any thread.
    VEXA_REALTIME virtual std::span<const FunctionInput> Inputs() const noexcept { return {}; }

    /// Returns the estimated nanoseconds per point when points are evaluated in blocks; 0 if the
    /// time is negligible. Any thread.
    virtual double Cost() const noexcept { return 0; }

    /// Returns f(x, y), where inputs[k] is the value of the k-th of Inputs(). Any thread at any
    /// time: must not block or allocate.
    VEXA_REALTIME virtual float At(float x, float y, const float* inputs) const noexcept = 0;

    /// Computes values[i] = f(x[i], y[i]) for 0 <= i < count, where the k-th of Inputs() is
    /// inputs[k][i]. The arrays do not overlap. The default evaluates point by point. Runs in the
    /// same threads as At.
    VEXA_REALTIME virtual void Evaluate(const float* x, const float* y, const float* const* inputs,
                                        float* values, std::size_t count) const noexcept;
};

/// A plane function as a value that shares ownership of its source. Copies are made and destroyed
/// only in threads that may wait, because the last one destroys the source; the media thread only
/// calls the function.
class PlaneFunction {
  public:
    /// Makes a function from one of the program's own, such as nullfunc.
    using Point = float (*)(float x, float y);
    PlaneFunction(Point point);
    /// `source` is not null, and of any kind.
    template<std::derived_from<PlaneSource> Source>
    PlaneFunction(std::shared_ptr<Source> source) : source(std::move(source)) {}

    VEXA_REALTIME const PlaneSource& Source() const noexcept { return *source; }

    /// Returns the value of a function of x and y alone, by the source's At.
    float operator()(float x, float y) const noexcept { return source->At(x, y, nullptr); }
    void Evaluate(const float* x, const float* y, float* values, std::size_t count) const noexcept {
        source->Evaluate(x, y, nullptr, values, count);
    }

  private:
    std::shared_ptr<const PlaneSource> source;
};

/// The renderer clamps the values of f to this magnitude. A low-cut filter's sums grow to about
/// 1e7 times its input at worst (a note of 0.1 Hz at 16 times the rate), and so stay finite.
constexpr float kMostHeard = 1e30F;
/// Returns the clamped value; 0 for a value that is not finite.
VEXA_REALTIME float Heard(float value);

/// Returns 0 everywhere.
float nullfunc(float x, float y);

/// Computes (y - x)(5xy + 2.7) / (1 + x^2 + y^2)^2, limited to -1..1; a NaN passes through.
float dummyfunction(float x, float y);

} // namespace vexa
