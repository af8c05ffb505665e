// SPDX-License-Identifier: GPL-3.0-or-later
// A field for one number with its unit, which wheel and arrow keys change too.
#pragma once

#include "kits/interface/Control.h"

#include <optional>
#include <string>

namespace vexa {

/// A field that shows a number and its unit, and takes it with or without. A step by wheel or arrow
/// key sends the message at once, Shift makes it ten times finer and Ctrl ten times coarser. An
/// empty text, or a click with Ctrl, leaves the number to whoever has the default. Window thread.
class NumberField : public BTextControl {
  public:
    struct Look {
        double minimum, maximum;
        /// The step of a turn of the wheel.
        double step;
        bool whole;
        std::string unit;
        /// The text that is shown for a number below the minimum, if that means something.
        std::string below;
    };

    /// The name says to a person what it is.
    NumberField(const std::string& name, Look look, BMessage* message);

    /// Shows the number, unless a person is about to type another.
    void Show(double number);
    double Shown() const { return shown; }
    /// Returns what a message of the field says was typed, as it would be written without the unit;
    /// nothing where the text was empty. It is not checked.
    std::optional<std::string> Typed(const BMessage& message) const;
    /// Tells that the text was not taken, and why; an empty fault tells that it was.
    void TellFault(const std::string& fault);
    /// Sets the words that tell what the field is for.
    void SetHelp(const std::string& next);

  private:
    std::string Stepped(const std::string& text, int steps, uint32 modifiers) const;
    std::optional<std::string> WithoutUnit(const std::string& shownText) const;
    std::string TextOf(double number) const;

    const Look look;
    double shown = 0;
    std::string help;
};

} // namespace vexa
