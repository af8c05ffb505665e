// SPDX-License-Identifier: GPL-3.0-or-later
// A button that stays pressed.
#pragma once

#include "kits/interface/View.h"

#include <functional>
#include <string>

namespace vexa {

/// A switch that a click, Enter or Space toggles. Window thread.
class Latch : public BView {
  public:
    Latch(const char* name, const char* label, std::function<void(bool)> changed);

    bool IsOn() const { return on; }
    /// Sets the state without calling the function.
    void SetOn(bool next);

    void Draw(BRect update) override;
    void ColorsChanged() override;
    void MouseDown(BPoint where) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }
    kits::AccessibleThing Describe() const override;
    void Activate(std::optional<std::size_t>) override { Change(); }

  private:
    void Change();

    const std::string label;
    std::function<void(bool)> changed;
    bool on = false;
};

} // namespace vexa
