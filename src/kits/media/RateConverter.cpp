// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/RateConverter.h"

#include "kits/support/RealtimeMark.h"

#include <cmath>
#include <stdexcept>

#include <zita-resampler/resampler.h>
#include <zita-resampler/vresampler.h>

namespace kits {

namespace {

constexpr unsigned kMostConverted = 2;

} // namespace

/// The library has two unrelated resampler classes: one has a filter for each phase of a simple
/// ratio, the other interpolates between the filters of 120 phases.
struct RateConverter::Stepper {
    virtual ~Stepper() = default;
    VEXA_REALTIME virtual void Reset() noexcept = 0;
    VEXA_REALTIME virtual std::size_t Process(const float* frames, std::size_t count,
                                              std::span<float> out) noexcept = 0;
    virtual std::size_t Half() const = 0;
};

template<class Resampler>
struct VEXA_REALTIME RateConverter::StepperOf : Stepper {
    explicit StepperOf(std::size_t channels) : channels(channels) {}
    void Reset() noexcept override {
        resampler.reset();
        // Silence up to the middle of the filter makes the output begin with the next frame.
        float none[kMostConverted] = {};
        Process(nullptr, (Half() - 1) * channels, {none, channels});
    }
    std::size_t Process(const float* frames, std::size_t count,
                        std::span<float> out) noexcept override {
        resampler.inp_count = static_cast<unsigned>(count / channels);
        // The library does not write there.
        resampler.inp_data = const_cast<float*>(frames);
        resampler.out_count = static_cast<unsigned>(out.size() / channels);
        resampler.out_data = out.data();
        resampler.process();
        return (out.size() / channels - resampler.out_count) * channels;
    }
    std::size_t Half() const override { return static_cast<std::size_t>(resampler.inpsize()) / 2; }

    std::size_t channels;
    Resampler resampler;
};

RateConverter::RateConverter(double from, double to, unsigned half, unsigned channels) {
    auto simple = std::make_unique<StepperOf<Resampler>>(channels);
    auto any = std::make_unique<StepperOf<VResampler>>(channels);
    const bool whole = from == std::floor(from) && to == std::floor(to);
    if (!CanConvert(from, to) || channels < 1 || channels > kMostConverted)
        throw std::invalid_argument("no conversion between these rates");
    if (whole && simple->resampler.setup(static_cast<unsigned>(from), static_cast<unsigned>(to),
                                         channels, half) == 0)
        stepper = std::move(simple);
    else if (any->resampler.setup(to / from, channels, half) == 0)
        stepper = std::move(any);
    else
        throw std::invalid_argument("no filter of that length");
    Reset();
}

RateConverter::~RateConverter() = default;

bool RateConverter::CanConvert(double from, double to) {
    return from >= 1 && to >= 1 && from < 1e9 && to < 1e9 && to <= 64 * from && from <= 16 * to;
}

void RateConverter::Reset() noexcept {
    stepper->Reset();
}

std::size_t RateConverter::Process(std::span<const float> frames, std::span<float> out) noexcept {
    return stepper->Process(frames.data(), frames.size(), out);
}

std::size_t RateConverter::Lookahead() const {
    return stepper->Half();
}

} // namespace kits
