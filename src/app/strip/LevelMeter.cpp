// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/LevelMeter.h"

#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr float kFloor = -48;
/// From here on a bar asks for attention.
constexpr float kLoud = -6;

// In pixels.

constexpr float kMargin = 3;
constexpr float kLightHeight = 5;
constexpr float kGap = 2;

} // namespace

LevelMeter::LevelMeter(OutputTap* tap)
    : BView({0, 0, 25, 63}, "level, decibels of full scale", B_FOLLOW_NONE,
            B_WILL_DRAW | B_NAVIGABLE),
      tap(tap) {
    SetViewColor(Colors().scope);
    SetToolTip(
        tap ? "The level of the output, -48 to 0 dB; the light tells that it was more than a "
              "device can play, and a click or Enter puts it out"
            : "The output is the host's");
}

void LevelMeter::Listen(bool on) {
    if (!tap || on == level.has_value())
        return;
    if (on)
        level.emplace(*tap);
    else
        level.reset();
}

float LevelMeter::HeightOf(float decibels) const {
    const float room = Bounds().Height() - 2 * kMargin - kLightHeight - kGap;
    return std::round(room * std::clamp(1 - decibels / kFloor, 0.0F, 1.0F));
}

void LevelMeter::Refresh(double seconds) {
    if (!level)
        return;
    level->Look(seconds);
    const std::array<float, 5> next = {HeightOf(level->Level(0)), HeightOf(level->Level(1)),
                                       HeightOf(level->Held(0)), HeightOf(level->Held(1)),
                                       level->Clipped() ? 1.0F : 0.0F};
    if (next == shown)
        return;
    shown = next;
    Invalidate();
}

void LevelMeter::PutOut() {
    if (level)
        level->Forgive();
    Refresh(0);
}

void LevelMeter::MouseDown(BPoint) {
    PutOut();
}

bool LevelMeter::KeyDown(const kits::KeyPress& press) {
    if (press.key != kits::Key::Enter)
        return false;
    PutOut();
    return true;
}

kits::AccessibleThing LevelMeter::Describe() const {
    kits::AccessibleThing meter;
    meter.role = kits::AccessibleRole::Meter;
    meter.name = Name();
    const double loudest = level ? std::max(level->Level(0), level->Level(1)) : kFloor;
    meter.number = kits::AccessibleNumber{std::max(loudest, double(kFloor)), kFloor, 0, 1, true};
    meter.description = level && level->Clipped() ? "clipped" : "";
    meter.action = "Reset";
    return meter;
}

void LevelMeter::Draw(BRect) {
    const Theme& colors = Colors();
    const BRect bounds = Bounds();
    const BRect light = {kMargin, kMargin, bounds.right - kMargin, kMargin + kLightHeight - 1};
    SetHighColor(shown[4] > 0 ? colors.bad : rgb_color{60, 40, 40});
    FillRect(light);
    const float bottom = bounds.bottom - kMargin;
    const float width = std::floor((bounds.right - 2 * kMargin + 1 - kGap) / 2);
    const float loud = HeightOf(kLoud);
    for (std::size_t i = 0; i < 2; i++) {
        const float left = kMargin + static_cast<float>(i) * (width + kGap);
        const float right = left + width - 1;
        const auto fill = [&](float from, float to, rgb_color color) {
            if (to <= from)
                return;
            SetHighColor(color);
            FillRect({left, bottom - to + 1, right, bottom - from});
        };
        fill(0, std::min(shown[i], loud), tap ? colors.good : colors.dimText);
        fill(loud, shown[i], colors.warning);
        const float held = shown[i + 2];
        fill(held > 0 ? held - 1 : 0, held, held > loud ? colors.warning : colors.good);
    }
    if (IsFocus()) {
        SetHighColor(colors.accent);
        StrokeRoundRect(bounds.InsetByCopy(0.5F, 0.5F), 1, 1.5F);
    }
}

} // namespace vexa
