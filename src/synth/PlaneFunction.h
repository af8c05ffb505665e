// A sound: a real function of the plane.
#pragma once

#include <concepts>
#include <cstddef>
#include <memory>
#include <utility>

namespace vexa {

/// What computes a plane function: a compiled expression, a program of ours, a sample. It never
/// changes once it is made, so any number of threads and instruments may share it, and it goes when
/// nobody has it any more.
class PlaneSource {
  public:
    PlaneSource() = default;
    virtual ~PlaneSource() = default;
    PlaneSource(const PlaneSource&) = delete;
    PlaneSource& operator=(const PlaneSource&) = delete;

    /// f(x, y). Any thread at any time: must not block or allocate.
    virtual float At(float x, float y) const noexcept = 0;

    /// values[i] = f(x[i], y[i]) for 0 <= i < count. The arrays do not overlap. A source without a
    /// faster way takes point after point. Threads as At.
    virtual void Evaluate(const float* x, const float* y, float* values,
                          std::size_t count) const noexcept;
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

    /// As those of PlaneSource.
    float operator()(float x, float y) const noexcept { return source->At(x, y); }
    void Evaluate(const float* x, const float* y, float* values, std::size_t count) const noexcept {
        source->Evaluate(x, y, values, count);
    }

  private:
    std::shared_ptr<const PlaneSource> source;
};

/// 0 everywhere.
float nullfunc(float x, float y);

/// (y - x)(5xy + 2.7) / (1 + x^2 + y^2)^2, limited to -1..1; a NaN passes through.
float dummyfunction(float x, float y);

} // namespace vexa
