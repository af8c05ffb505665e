// SPDX-License-Identifier: GPL-3.0-or-later
// A knob for a number from 0 to 1.
#pragma once

#include "kits/interface/View.h"

#include <functional>

namespace vexa {

/// A knob is turned by dragging up and down, by the wheel and by the arrow keys, finer with Shift
/// and coarser with Ctrl; Home and End are its ends. A click with Ctrl, or Delete, puts it to its
/// default. Window thread.
class Knob : public BView {
  public:
    Knob(BRect frame, const char* name, float initial);

    /// Called when a person has turned it.
    void OnTurn(std::function<void(float)> next) { turned = std::move(next); }
    /// Called when a person wants to type the number: at a double click, or Enter.
    void OnType(std::function<void()> next) { typing = std::move(next); }

    float Value() const { return value; }
    /// Sets the number and calls nobody.
    void SetValue(float next);
    /// Does what a person's turn does.
    void Turn(float next);
    /// Dims a knob that has no effect at present.
    void SetDimmed(bool next);

    void Draw(BRect update) override;
    void ColorsChanged() override;
    void MouseDown(BPoint where) override;
    void MouseMoved(BPoint where, uint32 transit, const BMessage* dragged) override;
    bool WheelMoved(BPoint where, BPoint steps) override;
    bool KeyDown(const kits::KeyPress& press) override;
    void FocusChanged() override { Invalidate(); }
    kits::AccessibleThing Describe() const override;
    void SetNumber(std::optional<std::size_t> part, double next) override;

  private:
    float Fineness() const;

    const float initial;
    float value;
    bool dimmed = false;
    /// The height, in pixels, at which a drag was last.
    float dragged = 0;
    std::function<void(float)> turned;
    std::function<void()> typing;
};

} // namespace vexa
