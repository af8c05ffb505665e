// Fewer frames per second.
#pragma once

#include <cstddef>
#include <vector>

namespace kits {

/// Lowers the rate of a stream of one channel to a whole part of it. What the lower rate cannot
/// hold is filtered out: 95 % of its frequencies are kept, and what would be folded onto them is
/// 110 dB lower. The result is not delayed against the input, n frames become
/// ceil(n / factor), and they are the same bits on every machine. One thread at a time; allocates.
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
    /// The filter; empty where the factor is 1.
    std::vector<float> taps;
    /// Frames that the next output and later ones need; the first is its first tap's.
    std::vector<float> held;
    /// Frames taken and given out so far.
    std::size_t taken = 0;
    std::size_t given = 0;
};

} // namespace kits
