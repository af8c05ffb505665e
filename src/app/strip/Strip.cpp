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
constexpr float kLeastScope = 64;
constexpr float kTuningWidth = 84;
constexpr float kLeastPlaying = 340;
constexpr float kWheelWidth = 20;
constexpr float kHoldWidth = 38;
constexpr float kHandsGap = 4;

float UpperHeight() {
    return std::max(MacroKnobs::PreferredHeight(), CellGrid::HeightOf(2));
}

/// Returns the width of all controls beside each other.
float WidthWithScope(float scopeWidth) {
    return scopeWidth + kStripGap + MacroKnobs::PreferredWidth() + 1 + kStripGap + kLeastPlaying +
           kStripGap + kTuningWidth;
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
    playingControls = new PlayingControls(mainView);
    tuning = new TuningControls(mainView);
    bend = new Wheel("pitch bend", true, [&hands](float value) { hands.Bend(value); });
    modulation = new Wheel("modulation", false, [&hands](float value) { hands.Modulate(value); });
    hold = new Latch("hold", "hold", [&hands](bool on) { hands.SetHold(on); });
    other = new Latch("macros, playing and tuning", "more", [this](bool) { Turn(); });
    piano = new Piano(mainView);
    modulation->SetToolTip("The modulation wheel, controller 1");
    other->SetToolTip("Goes on to what has no room here");
    hold->SetToolTip("Notes go on when their keys are let go, as with the sustain pedal");
    for (BView* view :
         {static_cast<BView*>(scope), static_cast<BView*>(macros),
          static_cast<BView*>(playingControls), static_cast<BView*>(tuning),
          static_cast<BView*>(bend), static_cast<BView*>(modulation), static_cast<BView*>(hold),
          static_cast<BView*>(other), static_cast<BView*>(piano)})
        AddChild(view);
    Arrange();
}

Strip::~Strip() = default;

float Strip::PreferredHeight() {
    return kTop + UpperHeight() + 1 + kRowGap + kPianoHeight + kBottom;
}

float Strip::LeastHeight() const {
    return kTop + (Shown().hands ? kLowPianoHeight : UpperHeight() + 1) + kBottom;
}

float Strip::LeastWidth() {
    return 2 * kStripMargin + WidthWithScope(kScopeWidth) - 1;
}

void Strip::AttachedToWindow() {
    Refresh();
}

void Strip::SetLow(bool next) {
    if (next == low)
        return;
    low = next;
    pageIndex = 0;
    Arrange();
}

std::vector<Strip::Page> Strip::Pages() const {
    const float room = Bounds().Width() + 1 - 2 * kStripMargin - (low ? kHoldWidth + kHandsGap : 0);
    std::vector<Page> pages;
    if (low)
        pages.push_back({.hands = true});
    if (room >= WidthWithScope(kLeastScope)) {
        pages.push_back({.hands = !low, .playing = true, .others = true});
    } else {
        pages.push_back({.hands = !low, .others = true});
        pages.push_back({.hands = !low, .playing = true});
    }
    return pages;
}

Strip::Page Strip::Shown() const {
    const std::vector<Page> pages = Pages();
    return pages[std::min(pageIndex, pages.size() - 1)];
}

void Strip::Turn() {
    const std::size_t pages = Pages().size();
    pageIndex = (std::min(pageIndex, pages - 1) + 1) % pages;
    Arrange();
    turned();
}

void Strip::Arrange() {
    const bool several = Pages().size() > 1;
    const Page page = Shown();
    const bool controls = page.playing || page.others;
    for (BView* view :
         {static_cast<BView*>(scope), static_cast<BView*>(macros), static_cast<BView*>(tuning)})
        ShowIf(*view, page.others);
    ShowIf(*playingControls, page.playing);
    for (BView* view : {static_cast<BView*>(bend), static_cast<BView*>(modulation),
                        static_cast<BView*>(hold), static_cast<BView*>(piano)})
        ShowIf(*view, page.hands);
    ShowIf(*other, several);
    other->SetOn(several && pageIndex > 0);
    float left = kStripMargin;
    float below = kTop;
    if (several && controls) {
        Put(*other, left, kTop, left + kHoldWidth - 1, kTop + UpperHeight());
        left += kHoldWidth + kHandsGap;
    }
    if (controls) {
        ArrangeControls(page, left, kTop, kTop + UpperHeight());
        below = kTop + UpperHeight() + 1 + kRowGap;
    }
    if (page.hands)
        ArrangeHands(below, Bounds().bottom - kBottom);
}

void Strip::ArrangeControls(const Page& page, float left, float top, float bottom) {
    const float right = Bounds().right - kStripMargin;
    const auto place = [&](BView& view, float width) {
        Put(view, left, top, left + width - 1, bottom);
        left += width + kStripGap;
    };
    // Only the scope and the controls for playing can have another width. Of a surplus the scope
    // gets a third beside the controls for playing, else all; it bears all of a shortage.
    const float fixed = WidthWithScope(0) - (page.playing ? 0 : kLeastPlaying + kStripGap);
    const float spare = right - left + 1 - fixed - kScopeWidth;
    if (page.others) {
        const float more = std::floor(page.playing && spare > 0 ? spare / 3 : spare);
        place(*scope, std::max(kScopeWidth + more, kLeastScope));
        place(*macros, MacroKnobs::PreferredWidth() + 1);
    }
    if (page.playing)
        place(*playingControls,
              std::max(right - left - (page.others ? kStripGap + kTuningWidth : 0), kLeastPlaying));
    if (page.others)
        place(*tuning, kTuningWidth);
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
    playingControls->Refresh();
    tuning->Refresh();
    piano->Refresh();
    ShowHands();
}

/// Shows changes from elsewhere: by a controller, or by silencing all.
void Strip::ShowHands() {
    const ScreenPiano& hands = mainView.Piano();
    modulation->SetValue(mainView.Engine().controllers[kits::kModulation]);
    bend->SetValue(hands.Bent());
    hold->SetOn(hands.Holds());
    const bool bends = mainView.Engine().playing.Bends();
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
