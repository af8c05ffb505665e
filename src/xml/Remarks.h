// SPDX-License-Identifier: GPL-3.0-or-later
// What there is to say about places of a text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vexa {

/// Line and column of a place in a text, both from 1; a column is a character in UTF-8.
struct Place {
    std::size_t line;
    std::size_t column;
};

/// The place that has `left` bytes of the text from it to the end.
Place PlaceOf(std::string_view text, std::size_t left);

/// One remark: what is wrong and what was expected instead, in one line. As a text is read by
/// taking pieces off its front, its place is told by how many bytes were left.
struct Remark {
    std::size_t left;
    std::string text;
};

/// Remarks on one text, of which the first kMost are kept and the others counted, so that a text
/// that is nothing but faults costs no memory. One thread.
class Remarks {
  public:
    static constexpr std::size_t kMost = 100;

    void Add(std::size_t left, std::string text);

    /// The remarks on `text`, which was read, in the order of their places: "NAME:LINE:COLUMN: ..."
    /// each; the last one says how many more there are.
    std::vector<std::string> Located(std::string_view name, std::string_view text) const;

  private:
    std::vector<Remark> kept;
    std::size_t others = 0;
};

/// "NAME:LINE:COLUMN: ..."
std::string Located(std::string_view name, std::string_view text, const Remark& remark);

} // namespace vexa
