// SPDX-License-Identifier: GPL-3.0-or-later
// A wheel beside the piano.
#pragma once

#include "kits/interface/View.h"

#include <functional>

namespace vexa {

/// A wheel is moved by dragging, by the arrow keys Up and Down and, unless it springs, by the mouse
/// wheel. Home, Delete and Enter set it to 0. Window thread.
class Wheel : public BView {
  public:
    /// Makes a wheel. A springing wheel covers -1..1 and returns to 0 when the mouse releases it or
    /// the keyboard focus leaves it; another one covers 0..1 and keeps its value. `moved` is called
    /// with each new value, except those of SetValue.
    Wheel(const char* name, bool springs, std::function<void(float)> moved);

    float Value() const { return value; }
    /// Sets the value without calling `moved`.
    void SetValue(float next);

    void Draw(BRect update) override;
    void ColorsChanged() override;
    void MouseDown(BPoint where) override;
    void MouseUp(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    bool WheelMoved(BPoint where, BPoint steps) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override;
    kits::AccessibleThing Describe() const override;
    void SetNumber(std::optional<std::size_t> part, double next) override;

  private:
    void Move(float next);
    /// Returns the length of the whole travel, in pixels.
    float Travel() const { return Bounds().Height() - 10; }

    const bool springs;
    std::function<void(float)> moved;
    float value = 0;
    float dragged = 0;
};

} // namespace vexa
