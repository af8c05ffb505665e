// SPDX-License-Identifier: GPL-3.0-or-later
// This gives out frames at another rate than they come in.
#pragma once

#include "kits/support/RealtimeMark.h"

#include <cstddef>
#include <memory>
#include <span>

namespace kits {

/// Converts a stream of interleaved channels from one sample rate to another. The filter has `half`
/// frames, of the lower of the two rates, to each side (8..96): 32 keep 85 % of the lower rate's
/// frequencies, 96 keep 95 %. One thread at a time.
class RateConverter {
  public:
    /// Makes a converter between two rates in hertz. Between whole numbers whose ratio is simple,
    /// as any two of the usual rates have, the images of a sine at 9/10 of the band are 110 dB
    /// below it, between others 92. It allocates, and throws std::invalid_argument for rates that
    /// CanConvert does not allow and for other than one or two channels.
    RateConverter(double from, double to, unsigned half, unsigned channels = 1);
    ~RateConverter();
    RateConverter(const RateConverter&) = delete;
    RateConverter& operator=(const RateConverter&) = delete;

    /// True for rates down to a sixteenth, and up to sixty-four times the first.
    static bool CanConvert(double from, double to);

    /// Begins anew: the next frame that is given out has the place of the next one that is taken.
    /// Wait-free.
    VEXA_REALTIME void Reset() noexcept;
    /// Takes all of `frames`, which have a value for each channel; answers how many values it put
    /// into `out`, which has room for two frames more than the ratio makes of them. Wait-free.
    VEXA_REALTIME std::size_t Process(std::span<const float> frames, std::span<float> out) noexcept;
    /// Returns how many frames must be taken after one before that can be given out.
    std::size_t Lookahead() const;

  private:
    struct Stepper;
    template<class Resampler>
    struct StepperOf;
    std::unique_ptr<Stepper> stepper;
};

} // namespace kits
