// SPDX-License-Identifier: GPL-3.0-or-later
// A choice of one word from a few.
#pragma once

#include "kits/interface/View.h"

#include <functional>
#include <string>
#include <vector>

namespace vexa {

/// Shows the words as chips, in rows of as many as fit; a click or the arrow keys choose one.
/// Window thread.
class ChipRow : public BView {
  public:
    /// Makes chips of `words`, with the first chosen. `choose` is called with the index of each
    /// newly chosen word, whether the user or a call of Choose has chosen it.
    ChipRow(BRect frame, const char* name, std::vector<std::string> words,
            std::function<void(std::size_t index)> choose);

    std::size_t Chosen() const { return chosen; }
    void Choose(std::size_t index);
    /// Returns the height of all rows, as BRect::Height counts it.
    float PreferredHeight() const;

    void Draw(BRect update) override;
    void MouseDown(BPoint where) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }

    kits::AccessibleThing Describe() const override;
    std::size_t CountParts() const override { return words.size(); }
    kits::AccessibleThing DescribePart(std::size_t index) const override;
    void Activate(std::optional<std::size_t> part) override;

  private:
    void Place();

    const std::vector<std::string> words;
    const std::function<void(std::size_t index)> choose;
    std::vector<BRect> places;
    std::size_t chosen = 0;
};

} // namespace vexa
