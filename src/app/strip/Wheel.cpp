// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/Wheel.h"

#include "views/Theme.h"

#include <algorithm>
#include <utility>

namespace vexa {

namespace {

/// The change by a key or a notch of the mouse wheel.
constexpr float kWheelStep = 0.1F;
constexpr float kWheelRadius = 4;

} // namespace

Wheel::Wheel(const char* name, bool springs, std::function<void(float)> moved)
    : BView({0, 0, 19, 43}, name, B_FOLLOW_NONE, B_WILL_DRAW | B_NAVIGABLE | B_KEEPS_POINTER),
      springs(springs),
      moved(std::move(moved)) {
    SetViewColor(Colors().panel);
}

void Wheel::SetValue(float next) {
    if (next == value)
        return;
    value = next;
    DescriptionChanged();
    Invalidate();
}

void Wheel::Move(float next) {
    const float bounded = std::clamp(next, springs ? -1.0F : 0.0F, 1.0F);
    if (bounded == value)
        return;
    SetValue(bounded);
    moved(bounded);
}

void Wheel::MouseDown(BPoint where) {
    dragged = where.y;
}

void Wheel::MouseUp(BPoint) {
    if (springs)
        Move(0);
}

void Wheel::MouseMoved(BPoint where, uint32, const BMessage*) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons);
    if (!(buttons & B_PRIMARY_MOUSE_BUTTON))
        return;
    const float way = (dragged - where.y) / Travel() * (springs ? 2 : 1);
    dragged = where.y;
    Move(value + way);
}

bool Wheel::WheelMoved(BPoint, BPoint steps) {
    // No event reports that the mouse wheel is released.
    if (springs)
        return false;
    Move(value + steps.y * kWheelStep);
    return true;
}

bool Wheel::KeyDown(const kits::KeyPress& press) {
    switch (press.key) {
    case kits::Key::Up:
        Move(value + kWheelStep);
        return true;
    case kits::Key::Down:
        Move(value - kWheelStep);
        return true;
    case kits::Key::Home:
    case kits::Key::Delete:
    case kits::Key::Enter:
        Move(0);
        return true;
    default:
        return false;
    }
}

void Wheel::FocusChanged() {
    if (springs && !IsFocus())
        Move(0);
    Invalidate();
}

kits::AccessibleThing Wheel::Describe() const {
    kits::AccessibleThing wheel;
    wheel.role = kits::AccessibleRole::Slider;
    wheel.name = Name();
    wheel.number = kits::AccessibleNumber{value, springs ? -1.0 : 0.0, 1, kWheelStep};
    return wheel;
}

void Wheel::SetNumber(std::optional<std::size_t>, double next) {
    Move(static_cast<float>(next));
}

void Wheel::ColorsChanged() {
    SetViewColor(Colors().panel);
}

void Wheel::Draw(BRect) {
    const Theme& colors = Colors();
    const BRect bounds = Bounds();
    SetHighColor(colors.editor);
    FillRoundRect(bounds, kWheelRadius);
    SetHighColor(IsFocus() ? colors.accent : colors.knobEdge);
    StrokeRoundRect(bounds.InsetByCopy(0.5F, 0.5F), kWheelRadius, IsFocus() ? 2 : 1);
    const float share = springs ? (value + 1) / 2 : value;
    const float y = bounds.bottom - 5 - share * Travel();
    SetHighColor(colors.knob);
    FillRoundRect({3, y - 4, bounds.right - 3, y + 4}, 2);
    SetHighColor(colors.accent);
    const BPoint mark[] = {{4, y}, {bounds.right - 4, y}};
    StrokePath(mark, 2);
}

} // namespace vexa
