// SPDX-License-Identifier: GPL-3.0-or-later
// A sound: a real function of the plane.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <concepts>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>

namespace vexa {

/// A value that a function may use beside the orbit's point.
struct FunctionInput {
    enum class Kind : unsigned char {
        /// One of the sound's four macros, 0..1.
        Macro,
        /// The note's velocity and key, each divided by 127.
        Velocity,
        Key,
        /// Seconds since note-on; they go on after the release.
        Time,
        /// The value of a controller, 0..1.
        Controller,
    };
    Kind kind;
    /// The number of the macro (0..3) or the controller (0..127); else 0.
    unsigned char number = 0;

    bool operator==(const FunctionInput&) const = default;
};

/// The most inputs that one function may have.
constexpr std::size_t kMostInputs = 16;

/// A source computes a plane function: a compiled expression, a program of ours, a sample, a
/// picture. It never changes once it is made, so any number of threads and instruments may share
/// it, and it goes when nobody has it any more.
class PlaneSource {
  public:
    PlaneSource() = default;
    virtual ~PlaneSource() = default;
    PlaneSource(const PlaneSource&) = delete;
    PlaneSource& operator=(const PlaneSource&) = delete;

    /// Returns what the function uses beside x and y, at most kMostInputs. Any thread.
    VEXA_REALTIME virtual std::span<const FunctionInput> Inputs() const noexcept { return {}; }

    /// Returns the estimated time in nanoseconds per point in blocks; 0 where it is too little to
    /// be worth a thought. Any thread.
    virtual double Cost() const noexcept { return 0; }

    /// f(x, y), where the k-th of Inputs() is inputs[k]. Any thread at any time: must not block or
    /// allocate.
    VEXA_REALTIME virtual float At(float x, float y, const float* inputs) const noexcept = 0;

    /// Computes values[i] = f(x[i], y[i]) for 0 <= i < count, where the k-th of Inputs() is
    /// inputs[k][i]. The arrays do not overlap. A source without a faster way takes point after
    /// point. It runs in the same threads as At.
    VEXA_REALTIME virtual void Evaluate(const float* x, const float* y, const float* const* inputs,
                                        float* values, std::size_t count) const noexcept;
};

/// A plane function as a value: a share in its source. Copies are made and dropped where waiting is
/// allowed, as the last to go takes the source with it; the media thread only calls.
class PlaneFunction {
  public:
    /// A function of the program's own, such as nullfunc.
    using Point = float (*)(float x, float y);
    PlaneFunction(Point point);
    /// `source` is not null, and of any kind.
    template<std::derived_from<PlaneSource> Source>
    PlaneFunction(std::shared_ptr<Source> source) : source(std::move(source)) {}

    VEXA_REALTIME const PlaneSource& Source() const noexcept { return *source; }

    /// Computes a function of x and y alone, by the source's At.
    float operator()(float x, float y) const noexcept { return source->At(x, y, nullptr); }
    void Evaluate(const float* x, const float* y, float* values, std::size_t count) const noexcept {
        source->Evaluate(x, y, nullptr, values, count);
    }

  private:
    std::shared_ptr<const PlaneSource> source;
};

/// A value of f counts in the sound as bounded to this on either side. A low-cut filter's sums grow
/// to some 8000 times its input (note 0 at 44100 samples per second), and so stay finite.
constexpr float kMostHeard = 1e30F;
/// The value as it is heard; 0 for what is not finite.
VEXA_REALTIME float Heard(float value);

/// Returns 0 everywhere.
float nullfunc(float x, float y);

/// Computes (y - x)(5xy + 2.7) / (1 + x^2 + y^2)^2, limited to -1..1; a NaN passes through.
float dummyfunction(float x, float y);

} // namespace vexa
