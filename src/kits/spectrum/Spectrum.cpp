// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/spectrum/Spectrum.h"

#include <cmath>
#include <numbers>

#include <fftw3.h>

namespace kits {

/// FFTW's buffers and the plan for them.
struct Spectrum::Plan {
    explicit Plan(std::size_t size)
        : in(fftwf_alloc_real(size)),
          out(fftwf_alloc_complex(size / 2 + 1)),
          plan(fftwf_plan_dft_r2c_1d(static_cast<int>(size), in, out, FFTW_ESTIMATE)) {}
    ~Plan() {
        fftwf_destroy_plan(plan);
        fftwf_free(out);
        fftwf_free(in);
    }
    Plan(const Plan&) = delete;
    Plan& operator=(const Plan&) = delete;

    float* in;
    fftwf_complex* out;
    fftwf_plan plan;
};

Spectrum::Spectrum(std::size_t size)
    : window(size), plan(std::make_unique<Plan>(size)), amplitudes(size / 2 + 1) {
    // The window's mean is 1/2, and a real sine is split between a positive and a negative
    // frequency; the factor compensates both.
    for (std::size_t i = 0; i < size; i++) {
        const double turn = 2 * std::numbers::pi * static_cast<double>(i);
        window[i] = static_cast<float>(2 * (1 - std::cos(turn / static_cast<double>(size))) /
                                       static_cast<double>(size));
    }
}

Spectrum::~Spectrum() = default;

std::span<const float> Spectrum::Amplitudes(std::span<const float> samples) {
    for (std::size_t i = 0; i < window.size(); i++)
        plan->in[i] = samples[i] * window[i];
    fftwf_execute(plan->plan);
    for (std::size_t k = 0; k < amplitudes.size(); k++)
        amplitudes[k] = std::hypot(plan->out[k][0], plan->out[k][1]);
    return amplitudes;
}

} // namespace kits
