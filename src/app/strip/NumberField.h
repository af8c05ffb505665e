// SPDX-License-Identifier: GPL-3.0-or-later
// A field for a number with its unit, which the mouse wheel and the arrow keys step.
#pragma once

#include "kits/interface/Control.h"

#include <optional>
#include <string>

namespace vexa {

/// A field that shows a number with its unit and accepts it with or without. A step by wheel or
/// arrow key sends the message at once; Shift makes it ten times finer, except for whole numbers,
/// and Ctrl ten times coarser. An empty text, or a click with Ctrl, lets the message's receiver
/// choose its default. Window thread.
class NumberField : public BTextControl {
  public:
    struct Look {
        double minimum, maximum;
        /// The step of one notch of the wheel.
        double step;
        bool whole;
        std::string unit;
        /// The text for a number below the minimum; empty if there are no such numbers.
        std::string below;
    };

    /// Makes a field that sends `message`. `name` is the name for accessibility.
    NumberField(const std::string& name, Look look, BMessage* message);

    /// Shows the number, unless the user is typing another one.
    void Show(double number);
    double Shown() const { return shown; }
    /// Returns the text that was typed, from a message of the field, without the unit; nothing if
    /// it was empty or the text `below`. The text is not checked.
    std::optional<std::string> Typed(const BMessage& message) const;
    /// Marks the text as not accepted, with `fault` as the reason; an empty `fault` removes the
    /// mark.
    void TellFault(const std::string& fault);

  private:
    std::string Stepped(const std::string& text, int steps, uint32 modifiers) const;
    std::optional<std::string> WithoutUnit(const std::string& shownText) const;
    std::string TextOf(double number) const;

    const Look look;
    double shown = 0;
};

} // namespace vexa
