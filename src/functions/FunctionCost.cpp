#include "functions/FunctionCost.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace vexa {

namespace {

using Clock = std::chrono::steady_clock;
using Nanoseconds = std::chrono::duration<double, std::nano>;

constexpr double kMostNanoseconds = 0.5e9 / 48000;
constexpr std::size_t kPoints = 64;
/// What the first try of a place may take before a second one is out of the question.
constexpr auto kPatience = std::chrono::milliseconds(5);

/// Of the first `count` points on an ellipse round (centre, centre).
double CostOf(const PlaneFunction& f, float centre, std::size_t count) {
    std::array<float, kPoints> x, y, values;
    for (std::size_t i = 0; i < count; i++) {
        const double turn = 2 * M_PI * static_cast<double>(i) / kPoints;
        x[i] = centre + static_cast<float>(1.5 * std::cos(turn));
        y[i] = centre + static_cast<float>(std::sin(turn));
    }
    const auto start = Clock::now();
    f.Evaluate(x.data(), y.data(), values.data(), count);
    return Nanoseconds(Clock::now() - start).count() / static_cast<double>(count);
}

} // namespace

double MeasureCost(const PlaneFunction& f) {
    double most = 0;
    for (const float centre : {0.0F, 1000.0F, 100000.0F}) {
        // One point first, which shows what cannot be waited for.
        double cost = CostOf(f, centre, 1);
        if (cost < Nanoseconds(kPatience).count()) {
            // The least of several, as other programs may have held it up.
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
    std::array<char, 160> text;
    std::snprintf(
        text.data(), text.size(),
        "the function takes %.3g microseconds for a point, which is too long to be played; "
        "%.2g are the most",
        nanosecondsPerPoint / 1000, kMostNanoseconds / 1000);
    return text.data();
}

} // namespace vexa
