// SPDX-License-Identifier: GPL-3.0-or-later
// The spectrum of a block of sound.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace kits {

/// Computes the spectra of blocks of one length. Only the constructor allocates memory. One thread
/// at a time.
class Spectrum {
  public:
    /// Prepares for blocks of `size` samples, an even number of at least 4.
    explicit Spectrum(std::size_t size);
    ~Spectrum();
    Spectrum(const Spectrum&) = delete;
    Spectrum& operator=(const Spectrum&) = delete;

    std::size_t Size() const { return window.size(); }
    /// Returns the amplitude at each frequency k * rate / size, k = 0 to size / 2, scaled so that a
    /// sine of that frequency has its own amplitude. A Hann window is applied. `samples` has `size`
    /// values. The result is valid until the next call.
    std::span<const float> Amplitudes(std::span<const float> samples);

  private:
    struct Plan;
    std::vector<float> window;
    std::unique_ptr<Plan> plan;
    std::vector<float> amplitudes;
};

} // namespace kits
