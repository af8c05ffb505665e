// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/NumberField.h"

#include "kits/support/NumberText.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

constexpr const char* kBlanks = " \t";
constexpr double kFiner = 0.1;
constexpr double kCoarser = 10;

/// Without blanks at the ends.
std::string Trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == text.npos ? "" : text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

} // namespace

NumberField::NumberField(const std::string& name, Look look, BMessage* message)
    : BTextControl({0, 0, 60, 0}, name.c_str(), nullptr, "", message), look(std::move(look)) {}

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
    std::string text = Trimmed(shownText);
    const std::string unit = Trimmed(look.unit);
    if (!unit.empty() && text.ends_with(unit))
        text = Trimmed(text.substr(0, text.size() - unit.size()));
    if (text.empty() || text == look.below)
        return std::nullopt;
    return text;
}

void NumberField::TellFault(const std::string& fault) {
    MarkWrong(!fault.empty());
    SetToolTip(fault.empty() ? help.c_str() : fault.c_str());
}

void NumberField::SetHelp(const std::string& next) {
    if (next == help)
        return;
    help = next;
    SetToolTip(help.c_str());
}

bool NumberField::Step(double steps) {
    if (!IsEnabled())
        return false;
    if (Modifiers() & B_SHIFT_KEY)
        steps *= kFiner;
    if (Modifiers() & B_CONTROL_KEY)
        steps *= kCoarser;
    double change = steps * look.step;
    if (look.whole) {
        rest += std::clamp(change, -look.maximum, look.maximum);
        change = std::trunc(rest);
        rest -= change;
    }
    // From what is typed, if that is a number.
    std::size_t length = 0;
    const double typed = kits::NumberOf(WithoutUnit(Text()).value_or(""), &length);
    const double from = length > 0 && IsEdited() ? typed : shown;
    // Hundredths of steps, so that the way back leads to where it came from.
    const double grid = look.whole ? 1 : look.step / 100;
    const double least = look.below.empty() ? look.minimum : look.minimum - 1;
    const double next = std::clamp(std::round((from + change) / grid) * grid, least, look.maximum);
    if (next == from)
        return true;
    shown = next;
    Type(TextOf(next).c_str());
    Confirm();
    return true;
}

bool NumberField::WheelMoved(BPoint, BPoint steps) {
    return Step(steps.y);
}

bool NumberField::KeyDown(const kits::KeyPress& press) {
    if (press.key != kits::Key::Up && press.key != kits::Key::Down)
        return false;
    return Step(press.key == kits::Key::Up ? 1 : -1);
}

} // namespace vexa
