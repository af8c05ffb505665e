// SPDX-License-Identifier: GPL-3.0-or-later
// The hint tells what is wrong with the expression that is being typed.
#pragma once

#include "kits/interface/View.h"

#include <optional>
#include <string>
#include <vector>

namespace vexa {

/// A note that comes up below the field while its text has a fault, over what is there, with a mark
/// under the place. Hidden at first. Window thread.
class FormulaHint : public BView {
  public:
    /// `top` is the first row below the field.
    FormulaHint(float left, float top, float right);

    /// Comes up with the reason, whose lines are wrapped, and a mark at `x`, in this view's
    /// parent's coordinates, if there is a place.
    void Explain(const std::string& reason, std::optional<float> x);
    /// Moves the mark alone, where the text has been scrolled.
    void MoveMark(std::optional<float> x);
    void Withdraw();

    /// Returns the lines as they are shown.
    const std::vector<std::string>& Lines() const { return lines; }
    /// Returns where the mark is, in pixels of this view.
    std::optional<float> Mark() const { return mark; }

    void Draw(BRect update) override;

  private:
    void Wrap(const std::string& line);

    font_height height;
    std::vector<std::string> lines;
    std::optional<float> mark;
};

} // namespace vexa
