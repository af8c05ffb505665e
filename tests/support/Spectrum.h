// SPDX-License-Identifier: GPL-3.0-or-later
// Measures a frequency's part in a stretch of samples.
#pragma once

#include <cmath>
#include <complex>
#include <span>

namespace test {

/// Returns the amplitude of the sine of `hertz` in the samples and its phase at the first of them,
/// from a sum weighted with a Hann window.
inline std::complex<double> Component(std::span<const float> samples, double hertz, double rate) {
    std::complex<double> sum = 0;
    double weights = 0;
    const double step = 2 * M_PI * hertz / rate;
    for (std::size_t i = 0; i < samples.size(); i++) {
        const double weight = 0.5 - 0.5 * std::cos(2 * M_PI * double(i) / double(samples.size()));
        weights += weight;
        sum += weight * samples[i] * std::polar(1.0, -step * double(i));
    }
    return 2.0 * sum / weights;
}
inline double Amplitude(std::span<const float> samples, double hertz, double rate) {
    return std::abs(Component(samples, hertz, rate));
}

} // namespace test
