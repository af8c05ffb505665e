#include "synth/PlanePicture.h"

#include "synth/BlockLoops.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <system_error>
#include <thread>
#include <vector>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

/// Points that are computed in one go: their places, values and words fit the first cache.
constexpr std::size_t kPiece = 2048;
/// How long one core computes before it looks whether the others are worth their start. That takes
/// about 30 microseconds on an idle machine, but hundreds where the other cores are busy, and the
/// picture has to wait for them.
constexpr auto kTrial = std::chrono::microseconds(20);
constexpr auto kWorthThreads = std::chrono::microseconds(500);

/// The rows of a picture in bands, which several threads take one after the other.
class Bands {
  public:
    Bands(const PlaneFunction& f, const PlaneArea& area, uint32* words)
        : f(f),
          area(area),
          words(words),
          rowsPerBand(std::max<std::size_t>(1, kPiece / std::max<std::size_t>(1, area.columns))),
          bands((area.rows + rowsPerBand - 1) / rowsPerBand),
          top((1 - area.linkScreenY) * static_cast<float>(area.rows) * area.scale),
          x(rowsPerBand * area.columns) {
        const float left = area.linkScreenX * static_cast<float>(area.columns) * area.scale;
        for (std::size_t c = 0; c < x.size(); c++)
            x[c] = area.linkFunctionX + static_cast<float>(c % area.columns) * area.scale - left;
    }

    /// Computes bands until there are none left.
    void DrawAll() {
        while (DrawNext()) {
        }
    }

    /// Computes bands until kTrial is over; how long the others will take at that pace.
    std::chrono::duration<double> Try() {
        const auto start = Clock::now();
        std::chrono::duration<double> passed{};
        while (passed < kTrial && DrawNext())
            passed = Clock::now() - start;
        const auto done = static_cast<double>(std::min<std::size_t>(next, bands));
        return passed * ((static_cast<double>(bands) - done) / std::max(done, 1.0));
    }

  private:
    bool DrawNext() {
        const std::size_t band = next.fetch_add(1, std::memory_order_relaxed);
        if (band >= bands)
            return false;
        const std::size_t first = band * rowsPerBand;
        const std::size_t rows = std::min(rowsPerBand, area.rows - first);
        alignas(64) float y[kPiece];
        alignas(64) float values[kPiece];
        // Of a row that is longer than a piece, all the pieces have the same y.
        for (std::size_t r = 0; r < rows; r++)
            std::fill_n(y + r * area.columns, std::min(kPiece, area.columns),
                        area.linkFunctionY - static_cast<float>(first + r) * area.scale + top);
        for (std::size_t i = 0; i < rows * area.columns; i += kPiece) {
            const std::size_t count = std::min(kPiece, rows * area.columns - i);
            f.Evaluate(&x[i], y, values, count);
            Loops().Words(values, words + first * area.columns + i, count);
        }
        return true;
    }

    const PlaneFunction& f;
    const PlaneArea& area;
    uint32* const words;
    const std::size_t rowsPerBand;
    const std::size_t bands;
    const float top;
    /// Of the points of a band.
    std::vector<float> x;
    std::atomic<std::size_t> next{0};
};

} // namespace

void DrawPlane(const PlaneFunction& f, const PlaneArea& area, uint32* words) {
    Bands bands(f, area, words);
    std::vector<std::jthread> helpers;
    if (bands.Try() > kWorthThreads) {
        try {
            for (unsigned core = 1; core < std::thread::hardware_concurrency(); core++)
                helpers.emplace_back([&bands] { bands.DrawAll(); });
        } catch (const std::system_error&) {
            // There are no more threads to be had: fewer compute it.
        }
    }
    bands.DrawAll();
}

} // namespace vexa
