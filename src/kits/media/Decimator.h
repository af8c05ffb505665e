// Fewer frames per second.
#pragma once

#include "kits/media/RateConverter.h"

#include <optional>
#include <vector>

namespace kits {

/// Lowers the rate of a stream of one channel to a whole part of it. Frequencies that the lower
/// rate cannot hold are filtered out. The result is not delayed against the input, and n frames
/// become ceil(n / factor). One thread at a time; allocates.
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
    std::optional<RateConverter> converter;
    /// Frames taken and given out so far.
    std::size_t taken = 0;
    std::size_t given = 0;
};

} // namespace kits
