// SPDX-License-Identifier: GPL-3.0-or-later
// A decimator leaves fewer frames per second.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"

#include <cstddef>
#include <vector>

namespace vexa {

/// Filters out of a stream what a lower rate cannot hold, by a windowed sinc that is the same on
/// every machine. Window and edge are those of zita-resampler, which converts rates where sound is
/// played live.
class DecimationFilter {
  public:
    /// Halves: that of a whole render, and that of what is played live, where delay counts.
    static constexpr std::size_t kWhole = 96, kLive = 32;

    /// Makes the filter for a rate that is `factor` times lower, with `half` frames of that rate to
    /// each side. kWhole keeps 95 % of its frequencies, kLive keeps 84 %; what lies beyond the
    /// lower rate's band is 110 dB lower with either. It allocates.
    DecimationFilter(std::size_t factor, std::size_t half);

    /// Returns the frames of the stream from the first one that a filtered one depends on to
    /// itself.
    std::size_t Reach() const { return reach; }
    /// Returns how many frames one filtered one is made of; those beyond 2 Reach() + 1 have no
    /// effect as long as they are finite.
    std::size_t Length() const { return taps.size(); }
    /// Computes the next `count` frames of the lower rate, of which the first has the place of
    /// frames[Reach()]. Real-time safe, any thread.
    VEXA_REALTIME void Run(const float* frames, float* out, std::size_t count) const noexcept {
        Loops().Filter(taps.data(), taps.size(), frames, factor, out, count);
    }

  private:
    std::size_t factor, reach;
    std::vector<float> taps;
};

/// Lowers the rate of a stream of one channel to a whole part of it. What the lower rate cannot
/// hold is filtered out: 95 % of its frequencies are kept, and what would be folded onto them is
/// 110 dB lower. The result is not delayed against the input, n frames become ceil(n / factor), and
/// they are the same bits on every machine. It allocates. One thread at a time.
class Decimator {
  public:
    /// `factor` is 1, 2, 4, 8 or 16; with 1 the stream passes unchanged.
    explicit Decimator(int factor);

    /// Takes the next `count` frames and appends what they yield to `out`; the filter holds back
    /// the last few.
    void Process(const float* frames, std::size_t count, std::vector<float>& out);

    /// Appends what was held back: the last call.
    void Finish(std::vector<float>& out);

  private:
    std::size_t factor;
    DecimationFilter filter;
    /// The frames that the next output and later ones need; the first belongs to the first tap.
    std::vector<float> held;
    /// How many frames were taken and given out so far.
    std::size_t taken = 0;
    std::size_t given = 0;
};

} // namespace vexa
