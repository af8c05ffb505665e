// SPDX-License-Identifier: GPL-3.0-or-later
// A knob for a number from 0 to 1.
#pragma once

#include "kits/interface/View.h"

#include <functional>

namespace vexa {

/// A knob is turned by dragging up and down, by the mouse wheel and by the arrow keys, more finely
/// with Shift and, except when dragging, more coarsely with Ctrl. Home and End turn it to its ends.
/// A click with Ctrl, or Delete, resets it to its default. Window thread.
class Knob : public BView {
  public:
    Knob(BRect frame, const char* name, float initial);

    /// Sets the function that is called when the user has turned the knob.
    void OnTurn(std::function<void(float)> next) { turned = std::move(next); }
    /// Sets the function that is called when the user asks to type the number, by a double click or
    /// Enter.
    void OnType(std::function<void()> next) { typing = std::move(next); }

    float Value() const { return value; }
    /// Sets the number without calling the function of OnTurn.
    void SetValue(float next);
    /// Turns the knob as the user does: clamps the number to 0..1, rounds it to four decimals and
    /// reports a change.
    void Turn(float next);
    /// Dims the knob, to show that it has no effect at present.
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
    /// The vertical position of the pointer at the last event of the drag, in pixels.
    float dragged = 0;
    /// The number to which the pointer has been dragged, before it is rounded.
    float aim = 0;
    std::function<void(float)> turned;
    std::function<void()> typing;
};

} // namespace vexa
