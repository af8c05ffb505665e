// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/Knob.h"

#include "views/Theme.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vexa {

namespace {

/// The angle of 0, and the angle from there to 1, in degrees counter-clockwise from the right.
constexpr float kStart = 225;
constexpr float kSweep = -270;
/// The length in pixels of a drag from end to end.
constexpr float kTravel = 150;
/// The change by a key or a notch of the wheel, and its factors with Shift and Ctrl.
constexpr float kStep = 0.02F;
constexpr float kFiner = 0.1F;
constexpr float kCoarser = 5;
/// Turning there and back leads to the same number, because numbers are multiples of 1 / kGrid.
constexpr float kGrid = 10000;

} // namespace

Knob::Knob(BRect frame, const char* name, float initial)
    : BView(frame, name, B_FOLLOW_NONE, B_WILL_DRAW | B_NAVIGABLE | B_KEEPS_POINTER),
      initial(initial),
      value(initial) {
    SetViewColor(Colors().panel);
}

void Knob::SetValue(float next) {
    if (next == value)
        return;
    value = next;
    DescriptionChanged();
    Invalidate();
}

void Knob::Turn(float next) {
    const float bounded = std::round(std::clamp(next, 0.0F, 1.0F) * kGrid) / kGrid;
    if (bounded == value)
        return;
    SetValue(bounded);
    if (turned)
        turned(bounded);
}

void Knob::SetDimmed(bool next) {
    if (next == dimmed)
        return;
    dimmed = next;
    Invalidate();
}

float Knob::Fineness() const {
    return (Modifiers() & B_SHIFT_KEY ? kFiner : 1) * (Modifiers() & B_CONTROL_KEY ? kCoarser : 1);
}

void Knob::MouseDown(BPoint where) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons);
    if (buttons != B_PRIMARY_MOUSE_BUTTON)
        return;
    dragged = where.y;
    aim = value;
    if (Modifiers() & B_CONTROL_KEY)
        Turn(initial);
    else if (Clicks() == 2 && typing)
        typing();
}

void Knob::MouseMoved(BPoint where, uint32, const BMessage*) {
    uint32 buttons = 0;
    GetMouse(&where, &buttons);
    if (buttons != B_PRIMARY_MOUSE_BUTTON || Modifiers() & B_CONTROL_KEY || where.y == dragged)
        return;
    const float way = (dragged - where.y) / kTravel * (Modifiers() & B_SHIFT_KEY ? kFiner : 1);
    dragged = where.y;
    aim = std::clamp(aim + way, 0.0F, 1.0F);
    Turn(aim);
}

bool Knob::WheelMoved(BPoint, BPoint steps) {
    Turn(value + steps.y * kStep * Fineness());
    return true;
}

bool Knob::KeyDown(const kits::KeyPress& press) {
    switch (press.key) {
    case kits::Key::Up:
    case kits::Key::Right:
        Turn(value + kStep * Fineness());
        return true;
    case kits::Key::Down:
    case kits::Key::Left:
        Turn(value - kStep * Fineness());
        return true;
    case kits::Key::Home:
        Turn(0);
        return true;
    case kits::Key::End:
        Turn(1);
        return true;
    case kits::Key::Delete:
        Turn(initial);
        return true;
    case kits::Key::Enter:
        if (typing)
            typing();
        return true;
    default:
        return false;
    }
}

kits::AccessibleThing Knob::Describe() const {
    kits::AccessibleThing knob;
    knob.role = kits::AccessibleRole::Slider;
    knob.name = Name();
    knob.number = kits::AccessibleNumber{value, 0, 1, kStep};
    return knob;
}

void Knob::SetNumber(std::optional<std::size_t>, double next) {
    Turn(static_cast<float>(next));
}

void Knob::ColorsChanged() {
    SetViewColor(Colors().panel);
}

void Knob::Draw(BRect) {
    const Theme& colors = Colors();
    const BRect bounds = Bounds();
    const BPoint middle = {bounds.right / 2, bounds.bottom / 2};
    const float radius = std::min(middle.x, middle.y) - 1;
    const float face = radius - 4;
    SetHighColor(colors.knob);
    FillEllipse(middle, face, face);
    SetHighColor(IsFocus() ? colors.accent : dimmed ? colors.dimText : colors.knobEdge);
    StrokeEllipse(middle, face, face, IsFocus() ? 2 : 1);
    SetHighColor(colors.edge);
    StrokeArc(middle, radius, kStart, kSweep, 2.5F);
    SetHighColor(dimmed ? colors.dimText : colors.accent);
    StrokeArc(middle, radius, kStart, kSweep * value, 2.5F);
    const float angle = (kStart + kSweep * value) * std::numbers::pi_v<float> / 180;
    const BPoint hand = {std::cos(angle), -std::sin(angle)};
    SetHighColor(dimmed ? colors.dimText : colors.text);
    const BPoint line[] = {{middle.x + hand.x * face * 0.3F, middle.y + hand.y * face * 0.3F},
                           {middle.x + hand.x * (face - 2), middle.y + hand.y * (face - 2)}};
    StrokePath(line, 2);
}

} // namespace vexa
