// SPDX-License-Identifier: GPL-3.0-or-later
// A wheel beside a piano.
#pragma once

#include "kits/interface/View.h"

#include <functional>

namespace vexa {

/// A wheel is moved by dragging, by the mouse's wheel and by the arrow keys. Window thread.
class Wheel : public BView {
  public:
    /// Makes a wheel. One that springs goes from -1 to 1 and back to 0 when it is let go, by the
    /// mouse, by Enter or when the keyboard goes elsewhere; another one goes from 0 to 1 and stays.
    Wheel(const char* name, bool springs, std::function<void(float)> moved);

    float Value() const { return value; }
    /// Sets the place and calls nobody.
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
    /// Returns the pixels of the whole way.
    float Travel() const { return Bounds().Height() - 10; }

    const bool springs;
    std::function<void(float)> moved;
    float value = 0;
    float dragged = 0;
};

} // namespace vexa
