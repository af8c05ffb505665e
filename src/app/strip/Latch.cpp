// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/Latch.h"

#include "views/Theme.h"

#include <cmath>
#include <utility>

namespace vexa {

namespace {

constexpr float kLatchRadius = 4;
constexpr float kLatchFontSize = 11;

} // namespace

Latch::Latch(const char* name, const char* label, std::function<void(bool)> changed)
    : BView({0, 0, 35, 43}, name, B_FOLLOW_NONE, B_WILL_DRAW | B_NAVIGABLE),
      label(label),
      changed(std::move(changed)) {
    BFont font = *be_plain_font();
    font.SetSize(kLatchFontSize);
    SetFont(&font);
    SetViewColor(Colors().panel);
}

void Latch::SetOn(bool next) {
    if (next == on)
        return;
    on = next;
    DescriptionChanged();
    Invalidate();
}

void Latch::Change() {
    SetOn(!on);
    changed(on);
}

void Latch::MouseDown(BPoint) {
    Change();
}

bool Latch::KeyDown(const kits::KeyPress& press) {
    if (press.key != kits::Key::Enter && press.character != U' ')
        return false;
    if (!press.repeat)
        Change();
    return true;
}

kits::AccessibleThing Latch::Describe() const {
    kits::AccessibleThing latch;
    latch.role = kits::AccessibleRole::Switch;
    latch.name = Name();
    latch.on = on;
    latch.action = "Press";
    return latch;
}

void Latch::ColorsChanged() {
    SetViewColor(Colors().panel);
}

void Latch::Draw(BRect) {
    const Theme& colors = Colors();
    const BRect bounds = Bounds();
    SetHighColor(on ? colors.soundingKey : colors.knob);
    FillRoundRect(bounds, kLatchRadius);
    SetHighColor(IsFocus() ? colors.accent : colors.knobEdge);
    StrokeRoundRect(bounds.InsetByCopy(0.5F, 0.5F), kLatchRadius, IsFocus() ? 2 : 1);
    font_height height;
    GetFontHeight(&height);
    SetHighColor(on ? colors.soundingText : colors.text);
    DrawString(label, {std::round((bounds.right - StringWidth(label)) / 2),
                       std::round((bounds.bottom + height.ascent - height.descent) / 2)});
}

} // namespace vexa
