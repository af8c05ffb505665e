// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaWindow.h"

#include "app/FieldId.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "app/bar/BarView.h"
#include "app/strip/Strip.h"
#include "kits/interface/Application.h"
#include "kits/interface/ScrollView.h"
#include "kits/translation/TranslationUtils.h"
#include "views/BitmapBarView.h"
#include "views/Theme.h"

#include <algorithm>
#include <iterator>

namespace vexa {

namespace {

/// Ten pulses a second move the orbits.
constexpr bigtime_t kPulseRate = 100000;
constexpr float kWidest = 10000;
/// Of the window, whose main view scrolls then, in pixels.
constexpr float kLeastWidth = 480;
constexpr float kLeastHeight = 240;

constexpr float kMainTop = 41;

/// Between the logo bar's pictures and what stands between them, in pixels.
constexpr float kBarGap = 6;

/// Whether the code is one of a control of the main view.
bool IsCommand(uint32 code) {
    static constexpr uint32 kCommands[] = {
        kExpressionTypedCode, kLoadFunctionCode, kSaveFunctionCode, kLoadSoundCode,
        kSaveSoundCode,       kLoadSampleCode,   kAllChannelsCode,
    };
    const auto between = [code](uint32 first, uint32 last) {
        return first <= code && code <= last;
    };
    const auto isRow = [code](const auto& row) { return row.code == code; };
    return std::find(std::begin(kCommands), std::end(kCommands), code) != std::end(kCommands) ||
           between(ChannelCode(1), ChannelCode(9)) || between(ChannelCode(10), ChannelCode(16)) ||
           between(VoicesCode(1), VoicesCode(9)) || between(VoicesCode(10), VoicesCode(20)) ||
           std::ranges::any_of(Parameters(), isRow) || std::ranges::any_of(FunctionFields(), isRow);
}

} // namespace

VexaWindow::VexaWindow(BRect frame, const kits::ProgramFolders& folders,
                       const WindowChoices& choices)
    : BWindow(frame, "Vexa", B_TITLED_WINDOW, B_NOT_ZOOMABLE, B_CURRENT_WORKSPACE),
      attached(choices.plugin != nullptr),
      mainHeight(frame.Height()),
      classic(choices.classic) {
    SetPulseRate(kPulseRate);
    ApplyColors();
    AddBar();
    mainView = new VexaView({0, kMainTop, frame.Width(), frame.Height()}, "VexaView", folders,
                            choices.plugin);
    mainPane = new BScrollView(mainView->Frame(), "main pane");
    AddChild(mainPane);
    mainPane->SetTarget(mainView, mainView->PreferredWidth(), mainView->Frame().Height());
    const BRect logo = logoBar->Bounds();
    bar = new BarView({barLeft, 2, logo.right - barRight, logo.bottom - 5}, *mainView);
    logoBar->AddChild(bar);
    const float bottom = frame.Height() + 1;
    playing = new Strip({0, bottom, frame.Width(), bottom + Strip::PreferredHeight()}, *mainView);
    strip.view = playing;
    strip.room = Strip::PreferredHeight() + 1;
    AddChild(strip.view);
    FoldWhatDoesNotFit();
    Fit(frame.Width());
    if (choices.withDefaultSound && !attached)
        mainView->LoadDefaultSound();
}

void VexaWindow::AddBar() {
    BBitmap* left = BTranslationUtils::GetBitmap("orvo.png");
    BBitmap* middle = BTranslationUtils::GetBitmap("orvobar.png");
    BBitmap* right = BTranslationUtils::GetBitmap("vexa.png");
    BRect bar = Bounds();
    bar.top = -2;
    bar.bottom = 45;
    logoBar = new BitmapBarView(left, middle, right, bar, "orvo logo", B_FOLLOW_LEFT_RIGHT,
                                B_WILL_DRAW | B_FRAME_EVENTS);
    AddChild(logoBar);
    barLeft = (left ? left->Bounds().Width() : 0) + kBarGap;
    barRight = (right ? right->Bounds().Width() : 0) + kBarGap;
}

/// That no part needs more of.
float VexaWindow::NeededWidth() const {
    const float beside = RoomOf(drawer);
    const float strips = Takes(strip) ? Strip::LeastWidth() : 0;
    return std::max(beside + mainView->PreferredWidth(), strips);
}

float VexaWindow::FullHeight() const {
    return mainHeight + RoomOf(strip);
}

/// Gives the window the size that its parts take, with a main view of that width, or wider where
/// that is too narrow, as far as the screen has room.
void VexaWindow::Fit(float mainWidth) {
    const BRect room = Room();
    const float height = std::min(FullHeight(), room.Height());
    const float needed = std::min(NeededWidth(), room.Width());
    SetSizeLimits(std::min(needed, kLeastWidth), kWidest, std::min(height, kLeastHeight),
                  FullHeight());
    const float width = std::clamp(RoomOf(drawer) + mainWidth, needed, room.Width());
    ResizeTo(width, height);
    const BPoint place = {std::clamp(Frame().left, room.left, room.right - width),
                          std::clamp(Frame().top, room.top, room.bottom - height)};
    if (place != Frame().LeftTop())
        MoveTo(place.x, place.y);
    Arrange();
}

/// Puts the parts where they belong in the window as it is.
void VexaWindow::Arrange() {
    const BRect bounds = Bounds();
    const float left = RoomOf(drawer);
    const float bottom = bounds.bottom - RoomOf(strip);
    const auto place = [](BView& view, float x, float y, float width, float height) {
        view.MoveTo(x, y);
        view.ResizeTo(width, height);
    };
    place(*mainPane, left, kMainTop, bounds.right - left, bottom - kMainTop);
    for (const Pane* pane : {&drawer, &strip}) {
        if (pane->view && Takes(*pane) == pane->view->IsHidden())
            Takes(*pane) ? pane->view->Show() : pane->view->Hide();
    }
    if (drawer.view)
        place(*drawer.view, 0, kMainTop, drawer.room - 1, bottom - kMainTop);
    if (strip.view)
        place(*strip.view, 0, bottom + 1, bounds.right, strip.room - 1);
    if (classic != bar->IsHidden())
        classic ? bar->Hide() : bar->Show();
}

/// Hides what leaves the main view too little of the screen.
void VexaWindow::FoldWhatDoesNotFit() {
    const BRect room = Room();
    if (Takes(strip) && FullHeight() > room.Height())
        strip.wanted = false;
    if (Takes(drawer) && NeededWidth() > room.Width())
        drawer.wanted = false;
}

void VexaWindow::FrameResized(float, float) {
    if (mainView)
        Arrange();
}

void VexaWindow::ShowPart(Part part, bool show) {
    const float width = mainPane->Frame().Width();
    PaneOf(part).wanted = show;
    Fit(width);
}

bool VexaWindow::IsShown(Part part) const {
    return Takes(PaneOf(part));
}

void VexaWindow::ApplyColors() {
    ChooseColors(classic ? ColorSet::Classic : dark ? ColorSet::Dark : ColorSet::Light);
    ColorsChanged();
}

void VexaWindow::SetClassic(bool on) {
    const float width = mainPane->Frame().Width();
    classic = on;
    ApplyColors();
    Fit(width);
}

void VexaWindow::SetDark(bool on) {
    dark = on;
    ApplyColors();
}

bool VexaWindow::TakeShortcut(const kits::KeyPress& press) {
    if (press.key == kits::Key::F9 && !classic) {
        ShowPart(Part::Drawer, !IsShown(Part::Drawer));
        return true;
    }
    if (press.key == kits::Key::F10 && !classic) {
        ShowPart(Part::Strip, !IsShown(Part::Strip));
        return true;
    }
    return false;
}

void VexaWindow::MessageReceived(BMessage* message) {
    if (!mainView)
        return BWindow::MessageReceived(message);
    switch (message->what) {
    case B_KEY_DOWN: {
        int32 character = 0;
        if (message->FindInt32("raw_char", &character) == B_OK && character == B_ESCAPE)
            mainView->SilenceAll();
        else
            mainView->Keyboard().Take(*message);
        break;
    }
    case kSilenceCode:
        mainView->SilenceAll();
        break;
    case B_KEY_UP:
    case B_WINDOW_ACTIVATED:
        mainView->Keyboard().Take(*message);
        break;
    case B_PULSE:
        mainView->WatchSound();
        bar->Refresh();
        break;
    default:
        if (IsCommand(message->what))
            mainView->MessageReceived(message);
        else
            BWindow::MessageReceived(message);
    }
}

bool VexaWindow::QuitRequested() {
    // Asked again, it finds nothing that is not saved.
    if (!attached && !mainView->MayGiveUp([this] { PostMessage(B_QUIT_REQUESTED); }))
        return false;
    be_app->PostMessage(B_QUIT_REQUESTED);
    return true;
}

} // namespace vexa
