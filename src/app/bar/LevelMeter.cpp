// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/bar/LevelMeter.h"

#include "app/bar/BarColors.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr float kQuietest = -48;
/// The level in dB from which a bar has the warning colour.
constexpr float kLoud = -6;
/// The period in microseconds: thirty times a second.
constexpr bigtime_t kMeterLook = 33333;

// In pixels.

constexpr float kMeterMargin = 4;
constexpr float kLightWidth = 7;
constexpr float kChannelGap = 2;

constexpr rgb_color kLightOff = {72, 40, 44};
constexpr const char* kTip =
    "The level of both channels, -48 to 0 dB. The light tells that it was more than a device can "
    "play; a click or Enter puts it out";

} // namespace

LevelMeter::LevelMeter(OutputTap& tap)
    : BView({0, 0, 63, 23}, "level, decibels of full scale", B_FOLLOW_NONE,
            B_WILL_DRAW | B_NAVIGABLE | B_SEE_THROUGH),
      tap(tap),
      before(std::chrono::steady_clock::now()),
      ticker(*this, kMeterLook, [this] { Refresh(); }) {
    SetViewColor(B_TRANSPARENT_COLOR);
    SetToolTip(kTip);
}

void LevelMeter::Listen(bool on) {
    if (on == level.has_value())
        return;
    if (on)
        level.emplace(tap);
    else
        level.reset();
}

float LevelMeter::LengthOf(float decibels) const {
    const float room = Bounds().Width() + 1 - 2 * kMeterMargin - kLightWidth - kChannelGap;
    return std::round(room * std::clamp(1 - decibels / kQuietest, 0.0F, 1.0F));
}

void LevelMeter::Refresh() {
    const auto now = std::chrono::steady_clock::now();
    const double seconds = std::chrono::duration<double>(now - before).count();
    before = now;
    if (!level)
        return;
    level->Look(seconds);
    const std::array<float, 5> next = {LengthOf(level->Level(0)), LengthOf(level->Level(1)),
                                       LengthOf(level->Held(0)), LengthOf(level->Held(1)),
                                       level->Clipped() ? 1.0F : 0.0F};
    if (next == shown)
        return;
    shown = next;
    Invalidate();
}

void LevelMeter::PutOut() {
    if (level)
        level->Forgive();
    Refresh();
}

void LevelMeter::MouseDown(BPoint) {
    PutOut();
}

bool LevelMeter::KeyDown(const kits::KeyPress& press) {
    if (press.key != kits::Key::Enter && press.character != U' ')
        return false;
    PutOut();
    return true;
}

kits::AccessibleThing LevelMeter::Describe() const {
    kits::AccessibleThing meter;
    meter.role = kits::AccessibleRole::Meter;
    meter.name = Name();
    const double loudest = level ? std::max(level->Level(0), level->Level(1)) : kQuietest;
    meter.number =
        kits::AccessibleNumber{std::max(loudest, double(kQuietest)), kQuietest, 0, 1, true};
    meter.description = level && level->Clipped() ? "clipped" : "";
    meter.action = "Reset";
    return meter;
}

void LevelMeter::Draw(BRect) {
    const Theme& colors = Colors();
    const BRect bounds = Bounds();
    SetHighColor(kBox);
    FillRoundRect(bounds, kBoxCorner);
    const float light = bounds.right - kMeterMargin - kLightWidth + 1;
    SetHighColor(shown[4] > 0 ? colors.bad : kLightOff);
    FillRect({light, kMeterMargin, bounds.right - kMeterMargin, bounds.bottom - kMeterMargin});
    const float height = std::floor((bounds.Height() + 1 - 2 * kMeterMargin - kChannelGap) / 2);
    const float loud = LengthOf(kLoud);
    for (std::size_t i = 0; i < 2; i++) {
        const float top = kMeterMargin + static_cast<float>(i) * (height + kChannelGap);
        const auto fill = [&](float from, float to, rgb_color color) {
            if (to <= from)
                return;
            SetHighColor(color);
            FillRect({kMeterMargin + from, top, kMeterMargin + to - 1, top + height - 1});
        };
        fill(0, std::min(shown[i], loud), colors.good);
        fill(loud, shown[i], colors.warning);
        const float held = shown[i + 2];
        fill(held > 0 ? held - 1 : 0, held, held > loud ? colors.warning : colors.good);
    }
    SetHighColor(IsFocus() ? colors.barText : kBoxEdge);
    StrokeRoundRect(bounds.InsetByCopy(0.5F, 0.5F), kBoxCorner, IsFocus() ? 1.5F : 1);
}

} // namespace vexa
