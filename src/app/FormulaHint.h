// SPDX-License-Identifier: GPL-3.0-or-later
// The hint that explains what is wrong or doubtful in the expression that is being typed.
#pragma once

#include "kits/interface/View.h"

#include <optional>
#include <string>
#include <vector>

namespace vexa {

/// A note below the expression's field, in front of the views there, while the text has a fault or
/// a doubt. A mark at its top points to the place. Hidden at first. Window thread.
class FormulaHint : public BView {
  public:
    /// `top` is the first row of pixels below the field.
    FormulaHint(float left, float top, float right);

    /// Shows the reason, with its lines wrapped, and a mark at `x` if the fault has a place. `x` is
    /// in coordinates of the parent view.
    void Explain(const std::string& reason, std::optional<float> x);
    /// Moves only the mark, for when the text has been scrolled.
    void MoveMark(std::optional<float> x);
    void Withdraw();

    /// Returns the lines as they are shown, after wrapping.
    const std::vector<std::string>& Lines() const { return lines; }
    /// Returns the x coordinate of the mark in this view, in pixels; nothing without a mark.
    std::optional<float> Mark() const { return mark; }

    void Draw(BRect update) override;
    void ColorsChanged() override;

  private:
    void Wrap(const std::string& line);

    font_height height;
    std::vector<std::string> lines;
    std::optional<float> mark;
};

} // namespace vexa
