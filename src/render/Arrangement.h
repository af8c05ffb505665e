// SPDX-License-Identifier: GPL-3.0-or-later
// The instruments that play a file together.
#pragma once

#include "kits/support/Result.h"
#include "render/Part.h"
#include "render/Progress.h"

#include <cstddef>
#include <list>
#include <vector>

namespace vexa {

/// An arrangement is the sum of its parts: each frame of the mix is that frame of each, added in
/// their order in single precision, whatever the rates that they are computed at. It is as long as
/// the longest, which has one frame more than others at most. One thread.
class Arrangement {
  public:
    /// Takes one part at least, all of them set up. Those without a note are left out, unless none
    /// has any.
    explicit Arrangement(std::list<Part> all);

    /// Returns 2 where one of the parts has two ears, else 1.
    std::size_t Channels() const { return channels; }
    double Seconds() const;
    double SecondsDone() const { return parts.front().SecondsDone(); }
    /// Renders a block of each part and puts the frames that all of them have ready, which may be
    /// none, in the place of what `frames` holds, the channels by turns. The value is whether there
    /// is more to come; the error a part's.
    kits::Result<bool> Render(std::vector<float>& frames);

    /// True where a function has had values beyond what counts (kMostHeard).
    bool HasBounded();
    /// Puts what was played into a summary. The voices of all parts are added up, as if each had
    /// most of its own at the same time.
    void Summarize(RenderSummary& summary);

  private:
    std::list<Part> parts;
    std::size_t channels = 1;
};

} // namespace vexa
