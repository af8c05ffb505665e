// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/PlanePicture.h"

#include "synth/BlockLoops.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <system_error>
#include <thread>
#include <vector>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;

/// The number of points that are computed in one go, so that their places, values and words fit
/// into the first-level cache.
constexpr std::size_t kPiece = 2048;
/// The time for which one core computes before it decides whether to wake the others, and the
/// remaining time above which it does. Waking takes some microseconds.
constexpr auto kTrial = std::chrono::microseconds(10);
constexpr auto kWorthHelp = std::chrono::microseconds(40);

} // namespace

/// The rows of a picture, in bands that several threads take one by one while taking is open.
class PlaneDrawing::Bands {
  public:
    /// Fills the words or the values, whichever are not null.
    Bands(const PlaneFunction& f, const PlaneArea& area, uint32* words, float* values)
        : f(f),
          area(area),
          words(words),
          values(values),
          rowsPerBand(std::max<std::size_t>(1, kPiece / std::max<std::size_t>(1, area.columns))),
          bands((area.rows + rowsPerBand - 1) / rowsPerBand),
          top((1 - area.linkScreenY) * static_cast<float>(area.rows) * area.scale),
          x(rowsPerBand * area.columns) {
        const float left = area.linkScreenX * static_cast<float>(area.columns) * area.scale;
        for (std::size_t c = 0; c < x.size(); c++)
            x[c] = area.linkFunctionX + static_cast<float>(c % area.columns) * area.scale - left;
    }

    /// Lets threads take bands, until the moment `end`.
    void Open(Clock::time_point end) {
        const std::lock_guard lock(mutex);
        closes = end;
        open = true;
    }

    /// Computes bands until none can be taken.
    void Draw() {
        while (DrawNext()) {
        }
    }

    /// Computes bands until kTrial is over, and returns the time that all the others would take at
    /// that pace.
    std::chrono::duration<double> Try() {
        const auto start = Clock::now();
        double done = 0;
        std::chrono::duration<double> passed{};
        for (; passed < kTrial && DrawNext(); done++)
            passed = Clock::now() - start;
        const std::lock_guard lock(mutex);
        return passed * (static_cast<double>(bands - next) / std::max(done, 1.0));
    }

    /// Stops the taking of bands, and waits for those that other threads have taken. A thread that
    /// comes later touches neither the function nor the words. Returns true if the picture is
    /// complete.
    bool Close() {
        std::unique_lock lock(mutex);
        open = false;
        changed.wait(lock, [this] { return finished == next; });
        return finished == bands;
    }

  private:
    bool DrawNext() {
        std::unique_lock lock(mutex);
        if (!open || next == bands || Clock::now() >= closes)
            return false;
        const std::size_t first = next++ * rowsPerBand;
        lock.unlock();
        Draw(first, std::min(rowsPerBand, area.rows - first));
        lock.lock();
        finished++;
        changed.notify_all();
        return true;
    }

    void Draw(std::size_t first, std::size_t rows) {
        alignas(64) float y[kPiece];
        alignas(64) float piece[kPiece];
        // If a row is longer than a piece, all pieces of the row have the same y.
        for (std::size_t r = 0; r < rows; r++)
            std::fill_n(y + r * area.columns, std::min(kPiece, area.columns),
                        area.linkFunctionY - static_cast<float>(first + r) * area.scale + top);
        for (std::size_t i = 0; i < rows * area.columns; i += kPiece) {
            const std::size_t count = std::min(kPiece, rows * area.columns - i);
            const std::size_t place = first * area.columns + i;
            f.Evaluate(&x[i], y, values ? values + place : piece, count);
            if (words)
                Loops().Words(piece, words + place, count);
        }
    }

    /// Owned by the caller, and not called any more once all bands are finished.
    const PlaneFunction& f;
    const PlaneArea area;
    uint32* const words;
    float* const values;
    const std::size_t rowsPerBand;
    const std::size_t bands;
    const float top;
    /// The x of each point of a band.
    std::vector<float> x;
    std::mutex mutex;
    std::condition_variable changed;
    bool open = false;
    Clock::time_point closes;
    /// The numbers of bands that have been taken and that are finished.
    std::size_t next = 0;
    std::size_t finished = 0;
};

/// One sleeping thread for each further core, from the first picture that needs them to the end of
/// the program.
class PlaneDrawing::Helpers {
  public:
    static Helpers& Instance() {
        static Helpers helpers;
        return helpers;
    }

    /// Lets all helpers draw bands of this picture. A helper that is late for it takes the next
    /// one.
    void Offer(std::shared_ptr<Bands> bands) {
        const std::lock_guard lock(mutex);
        offered = std::move(bands);
        offers++;
        changed.notify_all();
    }

  private:
    Helpers() {
        try {
            for (unsigned core = 1; core < std::thread::hardware_concurrency(); core++)
                threads.emplace_back([this](const std::stop_token& stop) { Run(stop); });
        } catch (const std::system_error&) {
            // The system has no more threads, so fewer help.
        }
    }

    void Run(const std::stop_token& stop) {
        std::unique_lock lock(mutex);
        std::size_t seen = 0;
        while (changed.wait(lock, stop, [&] { return offers != seen; })) {
            seen = offers;
            const std::shared_ptr<Bands> bands = offered;
            lock.unlock();
            bands->Draw();
            lock.lock();
        }
    }

    std::mutex mutex;
    std::condition_variable_any changed;
    std::shared_ptr<Bands> offered;
    std::size_t offers = 0;
    // The last member, so that the threads end before the members that they use.
    std::vector<std::jthread> threads;
};

PlaneDrawing::PlaneDrawing(const PlaneFunction& f, const PlaneArea& area, uint32* words)
    : bands(std::make_shared<Bands>(f, area, words, nullptr)) {}

PlaneDrawing::PlaneDrawing(const PlaneFunction& f, const PlaneArea& area, float* values)
    : bands(std::make_shared<Bands>(f, area, nullptr, values)) {}

bool PlaneDrawing::Continue(Clock::duration time) {
    const auto now = Clock::now();
    bands->Open(time < Clock::time_point::max() - now ? now + time : Clock::time_point::max());
    if (bands->Try() > kWorthHelp)
        Helpers::Instance().Offer(bands);
    bands->Draw();
    return bands->Close();
}

void DrawPlane(const PlaneFunction& f, const PlaneArea& area, uint32* words) {
    PlaneDrawing(f, area, words).Continue(Clock::duration::max());
}

} // namespace vexa
