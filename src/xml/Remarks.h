// SPDX-License-Identifier: GPL-3.0-or-later
// Remarks about places in a text, which are collected while the text is read.
#pragma once

#include "kits/support/Error.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// Returns the place in the text of `file` from which `left` bytes remain to the end of the text.
/// The column counts UTF-8 characters. Any thread.
kits::Place PlaceOf(std::string_view file, std::string_view text, std::size_t left);

/// Collects the remarks about one text while it is read. Only the first kMost remarks are kept, and
/// the others are counted, so that a text full of faults uses little memory. Only the reading
/// thread may use it.
class Remarks {
  public:
    static constexpr std::size_t kMost = 100;

    /// Adds a remark of one line: the fault, and the expected content. Because a text is read by
    /// removing pieces from its front, the place is given as the number of remaining bytes, `left`.
    /// The same remark again, by a second reader of the same part, is left out.
    void Add(std::size_t left, std::string text);

    /// Returns the remarks on `text`, which was read from `file`, in the order of their places. If
    /// some were only counted, a last entry gives their number.
    std::vector<kits::Error> Located(std::string_view file, std::string_view text) const;

  private:
    struct Remark {
        std::size_t left;
        std::string text;
        bool operator==(const Remark&) const = default;
    };

    std::vector<Remark> kept;
    std::size_t others = 0;
};

} // namespace vexa
