// SPDX-License-Identifier: GPL-3.0-or-later
// What there is to say about places of a text that is being read.
#pragma once

#include "kits/support/Error.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// The place in the text of the file that has `left` bytes from it to the text's end. Its column
/// counts characters in UTF-8. Any thread.
kits::Place PlaceOf(std::string_view file, std::string_view text, std::size_t left);

/// Collects what there is to say about one text while it is read. Of the remarks the first kMost
/// are kept and the others counted, so that a text that is nothing but faults costs no memory. A
/// Remarks belongs to the one thread that reads.
class Remarks {
  public:
    static constexpr std::size_t kMost = 100;

    /// Adds what is wrong and what was expected instead, in one line. As a text is read by taking
    /// pieces off its front, its place is told by how many bytes were left.
    void Add(std::size_t left, std::string text);

    /// Returns the remarks on `text`, which was read from the file, in the order of their places;
    /// the last one says how many more there are.
    std::vector<kits::Error> Located(std::string_view file, std::string_view text) const;

  private:
    struct Remark {
        std::size_t left;
        std::string text;
    };

    std::vector<Remark> kept;
    std::size_t others = 0;
};

} // namespace vexa
