// SPDX-License-Identifier: GPL-3.0-or-later
// A spectrum tells what frequencies a stretch of sound has.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace kits {

/// Computes spectra of stretches of one length. It allocates in its constructor alone. One thread
/// at a time.
class Spectrum {
  public:
    /// Prepares for stretches of `size` samples, an even number of at least 4.
    explicit Spectrum(std::size_t size);
    ~Spectrum();
    Spectrum(const Spectrum&) = delete;
    Spectrum& operator=(const Spectrum&) = delete;

    std::size_t Size() const { return window.size(); }
    /// Returns how loud each frequency k * rate / size is, k = 0 to size / 2, by a Hann window, as
    /// the amplitude of a sine of that frequency. The result is valid until the next call.
    /// `samples` has `size`.
    std::span<const float> Amplitudes(std::span<const float> samples);

  private:
    struct Plan;
    std::vector<float> window;
    std::unique_ptr<Plan> plan;
    std::vector<float> amplitudes;
};

} // namespace kits
