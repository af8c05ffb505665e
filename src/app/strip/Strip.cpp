// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/Strip.h"

#include "app/VexaView.h"
#include "app/strip/Latch.h"
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
#include <utility>

namespace vexa {

namespace {

/// The period in microseconds: thirty times a second.
constexpr bigtime_t kStripLook = 33333;

// In pixels.

constexpr float kStripMargin = 10;
constexpr float kTop = 7;
constexpr float kBottom = 7;
constexpr float kStripGap = 12;
constexpr float kRowGap = 7;
constexpr float kPianoHeight = 44;
constexpr float kLowPianoHeight = 34;
constexpr float kScopeWidth = 204;
constexpr float kTuningWidth = 84;
constexpr float kLeastPlaying = 340;
constexpr float kWheelWidth = 20;
constexpr float kHoldWidth = 38;
constexpr float kHandsGap = 4;

float UpperHeight() {
    return std::max(MacroKnobs::PreferredHeight(), CellGrid::HeightOf(2));
}

void ShowIf(BView& view, bool shown) {
    if (shown == view.IsHidden())
        shown ? view.Show() : view.Hide();
}

void Put(BView& view, float left, float top, float right, float bottom) {
    view.MoveTo(left, top);
    view.ResizeTo(right - left, bottom - top);
}

} // namespace

Strip::Strip(BRect frame, VexaView& mainView, std::function<void()> turned)
    : BView(frame, "strip", B_FOLLOW_NONE, B_WILL_DRAW | B_FRAME_EVENTS | B_PULSE_NEEDED),
      mainView(mainView),
      turned(std::move(turned)),
      ticker(*this, kStripLook, [this] { Refresh(); }) {
    SetViewColor(Colors().panel);
    OutputTap* tap = mainView.HasGraph() ? &mainView.Graph().Producer().Tap() : nullptr;
    ScreenPiano& hands = mainView.Piano();
    scope = new Scope(mainView, tap);
    macros = new MacroKnobs(mainView);
    playing = new PlayingControls(mainView);
    tuning = new TuningControls(mainView);
    bend = new Wheel("pitch bend", true, [&hands](float value) { hands.Bend(value); });
    modulation = new Wheel("modulation", false, [&hands](float value) { hands.Modulate(value); });
    hold = new Latch("hold", "hold", [&hands](bool on) { hands.SetHold(on); });
    other = new Latch("macros, playing and tuning", "more", [this](bool on) { Turn(on); });
    piano = new Piano(mainView);
    modulation->SetToolTip("The modulation wheel, controller 1");
    other->SetToolTip("Scope, macros, how the sound is played and tuning instead of the piano");
    hold->SetToolTip("Notes go on when their keys are let go, as with the sustain pedal");
    for (BView* view :
         {static_cast<BView*>(scope), static_cast<BView*>(macros), static_cast<BView*>(playing),
          static_cast<BView*>(tuning), static_cast<BView*>(bend), static_cast<BView*>(modulation),
          static_cast<BView*>(hold), static_cast<BView*>(other), static_cast<BView*>(piano)})
        AddChild(view);
    Arrange();
}

Strip::~Strip() = default;

float Strip::PreferredHeight() {
    return kTop + UpperHeight() + 1 + kRowGap + kPianoHeight + kBottom;
}

float Strip::LeastHeight() const {
    return kTop + (showsControls ? UpperHeight() + 1 : kLowPianoHeight) + kBottom;
}

float Strip::LeastWidth() {
    return 2 * kStripMargin + kScopeWidth + kStripGap + MacroKnobs::PreferredWidth() + kStripGap +
           kLeastPlaying + kStripGap + kTuningWidth;
}

void Strip::AttachedToWindow() {
    Refresh();
}

void Strip::SetLow(bool next) {
    if (next == low)
        return;
    low = next;
    Arrange();
}

void Strip::Turn(bool toControls) {
    showsControls = toControls;
    Arrange();
    turned();
}

void Strip::Arrange() {
    const bool controls = !low || showsControls;
    const bool hands = !low || !showsControls;
    for (BView* view : {static_cast<BView*>(scope), static_cast<BView*>(macros),
                        static_cast<BView*>(playing), static_cast<BView*>(tuning)})
        ShowIf(*view, controls);
    for (BView* view : {static_cast<BView*>(bend), static_cast<BView*>(modulation),
                        static_cast<BView*>(hold), static_cast<BView*>(piano)})
        ShowIf(*view, hands);
    ShowIf(*other, low);
    float left = kStripMargin;
    float below = kTop;
    if (low && controls) {
        Put(*other, left, kTop, left + kHoldWidth - 1, kTop + UpperHeight());
        left += kHoldWidth + kHandsGap;
    }
    if (controls) {
        ArrangeControls(left, kTop, kTop + UpperHeight());
        below = kTop + UpperHeight() + 1 + kRowGap;
    }
    if (hands)
        ArrangeHands(below, Bounds().bottom - kBottom);
}

void Strip::ArrangeControls(float left, float top, float bottom) {
    const float right = Bounds().right - kStripMargin;
    const auto place = [&](BView& view, float width, float gap) {
        Put(view, left, top, left + width - 1, bottom);
        left += width + gap;
    };
    // The scope gets a third of any surplus width, and bears all of a shortage.
    const float spare = Bounds().Width() - LeastWidth() - (left - kStripMargin);
    const float scopeWidth =
        kScopeWidth + std::floor(spare > 0 ? spare / 3 : std::max(spare, -kScopeWidth / 2));
    place(*scope, scopeWidth, kStripGap);
    place(*macros, MacroKnobs::PreferredWidth() + 1, kStripGap);
    place(*playing, std::max(right - kTuningWidth - kStripGap - left, kLeastPlaying), kStripGap);
    place(*tuning, kTuningWidth, 0);
}

void Strip::ArrangeHands(float top, float bottom) {
    float left = kStripMargin;
    const auto beside = [&](BView& view, float width) {
        Put(view, left, top, left + width - 1, bottom);
        left += width + kHandsGap;
    };
    beside(*bend, kWheelWidth);
    beside(*modulation, kWheelWidth);
    beside(*hold, kHoldWidth);
    if (low)
        beside(*other, kHoldWidth);
    Put(*piano, left, top, Bounds().right - kStripMargin, bottom);
}

void Strip::Refresh() {
    scope->Listen(!scope->IsHidden());
    scope->Refresh();
    macros->Refresh();
    playing->Refresh();
    tuning->Refresh();
    piano->Refresh();
    ShowHands();
}

/// Shows changes from elsewhere: by a controller, or by silencing all.
void Strip::ShowHands() {
    const ScreenPiano& hands = mainView.Piano();
    modulation->SetValue(mainView.Playing().controllers[kits::kModulation]);
    bend->SetValue(hands.Bent());
    hold->SetOn(hands.Holds());
    const bool bends = mainView.Playing().playing.Bends();
    bend->SetToolTip(bends ? "The pitch wheel; springs back"
                           : "The pitch wheel, for a sound that says how it is played");
}

/// While the strip is hidden, the scope does not listen to the output.
void Strip::Pulse() {
    if (!IsHidden())
        return;
    scope->Listen(false);
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
