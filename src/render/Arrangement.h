// SPDX-License-Identifier: GPL-3.0-or-later
// An arrangement is the set of instruments that play a file together.
#pragma once

#include "kits/support/Result.h"
#include "render/Part.h"
#include "render/Progress.h"

#include <cstddef>
#include <list>
#include <vector>

namespace vexa {

/// An arrangement mixes its parts: each frame of the mix is the sum of the parts' frames at that
/// position, added in the order of the parts in single precision, independently of their
/// oversampling. The mix is as long as the longest part; the parts' lengths differ by one frame at
/// most. One thread.
class Arrangement {
  public:
    /// Takes at least one part; all of them are set up. Parts without a note are left out, unless
    /// no part has a note.
    explicit Arrangement(std::list<Part> all);

    /// Returns 2 if any of the parts has two ears, else 1.
    std::size_t Channels() const { return channels; }
    double Seconds() const;
    double SecondsDone() const { return parts.front().SecondsDone(); }
    /// Renders a block of each part and replaces the content of `frames` by the interleaved frames
    /// that all parts have ready, possibly none. The value is true if more frames will follow; an
    /// error is that of a part.
    kits::Result<bool> Render(std::vector<float>& frames);

    /// Returns true if a function has given a value beyond the bound that is heard (kMostHeard).
    bool HasBounded();
    /// Returns the number of notes that were still held at the end and were faded out.
    std::size_t FadedNotes() const;
    /// Writes the statistics of the render into `summary`. The parts' peak numbers of voices are
    /// added up, as if all parts had reached them at the same time.
    void Summarize(RenderSummary& summary);

  private:
    std::list<Part> parts;
    std::size_t channels = 1;
};

} // namespace vexa
