// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/Strip.h"

#include "app/VexaView.h"
#include "app/strip/Latch.h"
#include "app/strip/LevelMeter.h"
#include "app/strip/MacroKnobs.h"
#include "app/strip/Piano.h"
#include "app/strip/PlayingControls.h"
#include "app/strip/Scope.h"
#include "app/strip/TuningControls.h"
#include "app/strip/Wheel.h"
#include "kits/midi/ControllerNumbers.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

/// Thirty times a second.
constexpr bigtime_t kLook = 33333;

// In pixels.

constexpr float kMargin = 10;
constexpr float kTop = 7;
constexpr float kBottom = 7;
constexpr float kGap = 12;
constexpr float kMeterGap = 4;
constexpr float kRowGap = 7;
constexpr float kPianoHeight = 44;
constexpr float kScopeWidth = 176;
constexpr float kMeterWidth = 24;
constexpr float kTuningWidth = 84;
constexpr float kLeastPlaying = 340;
constexpr float kWheelWidth = 20;
constexpr float kHoldWidth = 38;
constexpr float kHandsGap = 4;

float UpperHeight() {
    return std::max(MacroKnobs::PreferredHeight(), CellGrid::HeightOf(2));
}

void Put(BView& view, float left, float top, float right, float bottom) {
    view.MoveTo(left, top);
    view.ResizeTo(right - left, bottom - top);
}

} // namespace

Strip::Strip(BRect frame, VexaView& mainView)
    : BView(frame, "strip", B_FOLLOW_NONE, B_WILL_DRAW | B_FRAME_EVENTS | B_PULSE_NEEDED),
      mainView(mainView),
      ticker(*this, kLook, [this] { Refresh(); }) {
    SetViewColor(Colors().panel);
    OutputTap* tap = mainView.HasGraph() ? &mainView.Graph().Producer().Tap() : nullptr;
    ScreenPiano& hands = mainView.Piano();
    scope = new Scope(mainView, tap);
    meter = new LevelMeter(tap);
    macros = new MacroKnobs(mainView);
    playing = new PlayingControls(mainView);
    tuning = new TuningControls(mainView);
    bend = new Wheel("pitch bend", true, [&hands](float value) { hands.Bend(value); });
    modulation = new Wheel("modulation", false, [&hands](float value) { hands.Modulate(value); });
    hold = new Latch("hold", "hold", [&hands](bool on) { hands.SetHold(on); });
    piano = new Piano(mainView);
    modulation->SetToolTip("The modulation wheel, controller 1");
    hold->SetToolTip("Notes go on when their keys are let go, as with the sustain pedal");
    for (BView* view :
         {static_cast<BView*>(scope), static_cast<BView*>(meter), static_cast<BView*>(macros),
          static_cast<BView*>(playing), static_cast<BView*>(tuning), static_cast<BView*>(bend),
          static_cast<BView*>(modulation), static_cast<BView*>(hold), static_cast<BView*>(piano)})
        AddChild(view);
    before = std::chrono::steady_clock::now();
    Arrange();
}

Strip::~Strip() = default;

float Strip::PreferredHeight() {
    return kTop + UpperHeight() + 1 + kRowGap + kPianoHeight + kBottom;
}

float Strip::LeastWidth() {
    return 2 * kMargin + kScopeWidth + kMeterGap + kMeterWidth + kGap +
           MacroKnobs::PreferredWidth() + kGap + kLeastPlaying + kGap + kTuningWidth;
}

void Strip::AttachedToWindow() {
    Refresh();
}

void Strip::Arrange() {
    const BRect bounds = Bounds();
    const float bottom = kTop + UpperHeight();
    float x = kMargin;
    // What is wider than need be goes to the scope by half.
    const float more = std::max(bounds.Width() - LeastWidth(), 0.0F);
    const auto place = [&](BView& view, float width, float gap) {
        Put(view, x, kTop, x + width - 1, bottom);
        x += width + gap;
    };
    place(*scope, kScopeWidth + std::floor(more / 3), kMeterGap);
    place(*meter, kMeterWidth, kGap);
    place(*macros, MacroKnobs::PreferredWidth() + 1, kGap);
    const float right = bounds.right - kMargin;
    place(*playing, std::max(right - kTuningWidth - kGap - x, kLeastPlaying), kGap);
    place(*tuning, kTuningWidth, 0);

    const float top = bottom + 1 + kRowGap;
    const float end = top + kPianoHeight - 1;
    x = kMargin;
    const auto beside = [&](BView& view, float width) {
        Put(view, x, top, x + width - 1, end);
        x += width + kHandsGap;
    };
    beside(*bend, kWheelWidth);
    beside(*modulation, kWheelWidth);
    beside(*hold, kHoldWidth);
    Put(*piano, x, top, right, end);
}

void Strip::Refresh() {
    const auto now = std::chrono::steady_clock::now();
    const double seconds = std::chrono::duration<double>(now - before).count();
    before = now;
    scope->Listen(true);
    meter->Listen(true);
    scope->Refresh();
    meter->Refresh(seconds);
    macros->Refresh();
    playing->Refresh();
    tuning->Refresh();
    piano->Refresh();
    ShowHands();
}

/// What has been changed elsewhere: by a controller, or by silencing all.
void Strip::ShowHands() {
    const ScreenPiano& hands = mainView.Piano();
    modulation->SetValue(mainView.Playing().controllers[kits::kModulation]);
    bend->SetValue(hands.Bent());
    hold->SetOn(hands.Holds());
    const bool bends = mainView.Playing().playing.Bends();
    bend->SetToolTip(bends ? "The pitch wheel; springs back"
                           : "The pitch wheel, for a sound that says how it is played");
}

/// While it is hidden the output is left alone.
void Strip::Pulse() {
    if (!IsHidden())
        return;
    scope->Listen(false);
    meter->Listen(false);
}

void Strip::ColorsChanged() {
    SetViewColor(Colors().panel);
}

void Strip::FrameResized(float, float) {
    Arrange();
}

void Strip::Draw(BRect) {
    SetHighColor(Colors().edge);
    StrokeLine({0, 0}, {Bounds().right, 0});
}

} // namespace vexa
