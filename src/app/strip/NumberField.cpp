// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/NumberField.h"

#include "kits/support/NumberText.h"
#include "kits/support/Trimmed.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

constexpr double kFinerStep = 0.1;
constexpr double kCoarserStep = 10;

} // namespace

NumberField::NumberField(const std::string& name, Look look, BMessage* message)
    : BTextControl({0, 0, 60, 0}, name.c_str(), nullptr, "", message), look(std::move(look)) {
    SetStepping([this](const std::string& text, int steps, uint32 modifiers) {
        return Stepped(text, steps, modifiers);
    });
    SetReset("");
}

std::string NumberField::TextOf(double number) const {
    if (number < look.minimum && !look.below.empty())
        return look.below;
    return kits::ShortText(number) + look.unit;
}

void NumberField::Show(double number) {
    shown = number;
    const std::string text = TextOf(number);
    if (IsEdited() || Text() == text)
        return;
    SetText(text.c_str());
    TellFault("");
}

std::optional<std::string> NumberField::Typed(const BMessage& message) const {
    std::string text;
    message.FindString("be:text", &text);
    return WithoutUnit(text);
}

std::optional<std::string> NumberField::WithoutUnit(const std::string& shownText) const {
    std::string_view text = kits::Trimmed(shownText);
    const std::string_view unit = kits::Trimmed(look.unit);
    if (!unit.empty() && text.ends_with(unit))
        text = kits::Trimmed(text.substr(0, text.size() - unit.size()));
    if (text.empty() || text == look.below)
        return std::nullopt;
    return std::string(text);
}

void NumberField::TellFault(const std::string& fault) {
    MarkWrong(!fault.empty());
    SetToolTip(fault.c_str());
}

/// Steps from the typed text if that is a number, else from the shown one.
std::string NumberField::Stepped(const std::string& text, int steps, uint32 modifiers) const {
    std::size_t length = 0;
    const double typed = kits::NumberOf(WithoutUnit(text).value_or(""), &length);
    const double from = length > 0 && IsEdited() ? typed : shown;
    double step = look.step;
    if (modifiers & B_SHIFT_KEY && !look.whole)
        step *= kFinerStep;
    if (modifiers & B_CONTROL_KEY)
        step *= kCoarserStep;
    // Rounds to hundredths of a step, so that stepping back returns to the same number.
    const double grid = look.whole ? 1 : look.step / 100;
    const double least = look.below.empty() ? look.minimum : look.minimum - 1;
    const double next = std::round((from + steps * step) / grid) * grid;
    return TextOf(std::clamp(next, least, look.maximum));
}

} // namespace vexa
