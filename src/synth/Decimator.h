// SPDX-License-Identifier: GPL-3.0-or-later
// Decimation: lowering the sample rate of a stream by an integer factor.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"

#include <cstddef>
#include <vector>

namespace vexa {

/// Removes the frequencies above the band of a lower rate, with a windowed sinc that is the same on
/// every machine. Window and edge are those of zita-resampler, which converts rates where sound is
/// played live.
class DecimationFilter {
  public:
    /// Half lengths of the filter: for a whole render, and for live playing, where the delay
    /// matters.
    static constexpr std::size_t kWhole = 96, kLive = 32;

    /// Makes the filter for a rate that is `factor` times lower, with `half` frames of that rate to
    /// each side. kWhole keeps 95 % of the lower rate's band, kLive keeps 84 %; both attenuate
    /// frequencies beyond that band by 110 dB. Allocates.
    DecimationFilter(std::size_t factor, std::size_t half);

    /// Returns the distance, in frames of the input, from the first frame on which a filtered frame
    /// depends to that frame's own position.
    std::size_t Reach() const { return reach; }
    /// Returns the number of input frames that are read for one filtered frame. Those beyond 2
    /// Reach() + 1 have no effect if they are finite.
    std::size_t Length() const { return taps.size(); }
    /// Computes the next `count` frames of the lower rate. The first is at the position of
    /// frames[Reach()]. Real-time safe, any thread.
    VEXA_REALTIME void Run(const float* frames, float* out, std::size_t count) const noexcept {
        Loops().Filter(taps.data(), taps.size(), frames, factor, out, count);
    }

  private:
    std::size_t factor, reach;
    std::vector<float> taps;
};

/// Divides the sample rate of a mono stream by an integer factor. 95 % of the lower rate's band are
/// kept, and frequencies that would alias into them are attenuated by 110 dB. The output is not
/// delayed against the input, n frames become ceil(n / factor), and the bits are the same on every
/// machine. Allocates. One thread at a time.
class Decimator {
  public:
    /// `factor` is 1, 2, 4, 8 or 16; with 1 the stream passes unchanged.
    explicit Decimator(int factor);

    /// Takes the next `count` frames and appends the resulting frames to `out`; the filter holds
    /// back the last few.
    void Process(const float* frames, std::size_t count, std::vector<float>& out);

    /// Appends the frames that were held back. This is the last call.
    void Finish(std::vector<float>& out);

  private:
    std::size_t factor;
    DecimationFilter filter;
    /// The frames that the next and later output needs; the first belongs to the first tap.
    std::vector<float> held;
    /// The numbers of frames taken and given out so far.
    std::size_t taken = 0;
    std::size_t given = 0;
};

} // namespace vexa
