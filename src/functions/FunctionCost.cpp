// SPDX-License-Identifier: GPL-3.0-or-later
#include "functions/FunctionCost.h"

#include "kits/maths/Functions.h"
#include "kits/support/NumberText.h"
#include "kits/support/ThreadTime.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <numbers>

namespace vexa {

namespace {

constexpr double kNanosecondsPerSample = 1e9 / 48000;
constexpr double kMostNanoseconds = 0.5 * kNanosecondsPerSample;
/// The share of a core's time that all voices may take together, and the nanoseconds per sample
/// that a voice takes besides its function.
constexpr double kShare = 0.9;
constexpr double kVoiceNanoseconds = 2;
constexpr std::size_t kPoints = 64;
/// The longest time of a single point, in nanoseconds; above it no further points are measured.
constexpr double kPatience = 5e6;

/// Returns the nanoseconds per point for the first `count` points on an ellipse round (centre,
/// centre).
double CostOf(const PlaneFunction& f, float centre, std::size_t count) {
    std::array<float, kPoints> x, y, values;
    for (std::size_t i = 0; i < count; i++) {
        const double turn = 2 * std::numbers::pi * static_cast<double>(i) / kPoints;
        x[i] = centre + static_cast<float>(1.5 * kits::maths::Wave<true>(turn));
        y[i] = centre + static_cast<float>(kits::maths::Wave<false>(turn));
    }
    const std::chrono::nanoseconds start = kits::ThreadTime();
    f.Evaluate(x.data(), y.data(), values.data(), count);
    const std::chrono::duration<double, std::nano> spent = kits::ThreadTime() - start;
    return spent.count() / static_cast<double>(count);
}

} // namespace

double MeasureCost(const PlaneFunction& f) {
    double most = 0;
    for (const float centre : {0.0F, 1000.0F, 100000.0F}) {
        // A single point first, which shows whether many would take too long.
        double cost = CostOf(f, centre, 1);
        if (cost < kPatience) {
            // The least of several measurements, because the first one includes cold caches.
            cost = CostOf(f, centre, kPoints);
            for (int i = 0; i < 4 && cost > kMostNanoseconds / 10; i++)
                cost = std::min(cost, CostOf(f, centre, kPoints));
        }
        most = std::max(most, cost);
    }
    return most;
}

std::optional<std::string> TooCostly(double nanosecondsPerPoint) {
    if (!(nanosecondsPerPoint > kMostNanoseconds))
        return std::nullopt;
    return "the function takes " + kits::RoundedText(nanosecondsPerPoint / 1000, 3) +
           " microseconds for a point, which is too long to be played; " +
           kits::RoundedText(kMostNanoseconds / 1000, 2) + " are the most";
}

int VoicesOf(double nanosecondsPerPoint) {
    const double voices =
        kShare * kNanosecondsPerSample / (nanosecondsPerPoint + kVoiceNanoseconds);
    return static_cast<int>(std::clamp(voices, 1.0, 1000.0));
}

} // namespace vexa
