// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaWindow.h"

#include "app/FieldId.h"
#include "app/MacroStrip.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "kits/interface/Application.h"
#include "kits/interface/Control.h"
#include "kits/interface/Menu.h"
#include "kits/translation/TranslationUtils.h"
#include "views/BitmapBarView.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vexa {

namespace {

/// Ten pulses a second move the orbits.
constexpr bigtime_t kPulseRate = 100000;
constexpr float kWidest = 10000;

constexpr float kMainTop = 41;

// The button in the logo bar, in pixels.

constexpr float kSilenceGap = 12;
constexpr float kSilenceWidth = 59;
constexpr float kSilenceTop = 13;
constexpr float kSilenceHeight = 20;

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

/// Chooses the item of a menu whose message has that code.
void Choose(BMenu& menu, uint32 code) {
    if (BMenuItem* item = menu.FindItem(code))
        item->Choose();
}

/// A frame that has room for them below.
BRect WithMacros(BRect frame) {
    frame.bottom += MacroStrip::PreferredHeight() + 1;
    return frame;
}

} // namespace

VexaWindow::VexaWindow(BRect frame, const kits::ProgramFolders& folders, bool withDefaultSound,
                       Attachment* plugin, std::shared_ptr<Settings> settings)
    : BWindow(WithMacros(frame), "Vexa", B_TITLED_WINDOW, B_NOT_ZOOMABLE | B_NOT_V_RESIZABLE,
              B_CURRENT_WORKSPACE),
      attached(plugin != nullptr) {
    SetPulseRate(kPulseRate);
    BBitmap* left = BTranslationUtils::GetBitmap("orvo.png");
    BBitmap* middle = BTranslationUtils::GetBitmap("orvobar.png");
    BBitmap* right = BTranslationUtils::GetBitmap("vexa.png");
    BRect bar = Bounds();
    bar.top = -2;
    bar.bottom = 45;
    logoBar = new BitmapBarView(left, middle, right, bar, "orvo logo", B_FOLLOW_LEFT_RIGHT,
                                B_WILL_DRAW | B_FRAME_EVENTS);
    AddChild(logoBar);
    const float end = bar.Width() - (right ? right->Bounds().Width() : 0) - kSilenceGap;
    auto* silence = new BButton(
        {end - kSilenceWidth, kSilenceTop, end, kSilenceTop + kSilenceHeight}, "Silence", "Silence",
        new BMessage(kSilenceCode), B_FOLLOW_RIGHT | B_FOLLOW_TOP);
    silence->SetToolTip("Ends all that sounds, at once (Esc)");
    logoBar->AddChild(silence);
    mainView = new VexaView({0, kMainTop, frame.Width(), frame.Height()}, "VexaView", folders,
                            plugin, std::move(settings));
    AddChild(mainView);
    AddChild(new MacroStrip(0, frame.Height() + 1, frame.Width(), *mainView));
    const float needed = std::max(mainView->PreferredWidth(), MacroStrip::LeastWidth());
    SetSizeLimits(needed, kWidest, Bounds().Height(), Bounds().Height());
    ResizeTo(std::max(frame.Width(), needed), Bounds().Height());
    if (withDefaultSound && !attached)
        mainView->LoadDefaultSound();
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
        FollowSession();
        logoBar->SetCaption(mainView->Caption());
        break;
    default:
        if (IsCommand(message->what))
            mainView->MessageReceived(message);
        else
            BWindow::MessageReceived(message);
    }
}

void VexaWindow::Begin(const AppOptions& options, const Tuning& tuning,
                       kits::Recording* recording) {
    VexaView& view = *mainView;
    view.Playing().consumer.SetTuning(tuning);
    if (options.mpe)
        view.Playing().consumer.ExpectMpe();
    view.FollowPrograms(options.programs);
    view.Prefer(options.playing);
    if (savedProject.windowShown)
        Show();
    view.Record(recording);
    if (options.sound)
        view.LoadSound(*options.sound);
    if (options.file)
        view.Open(*options.file);
    // What the command line asks for is no change.
    view.TakeAsSaved();
    if (options.voices)
        Choose(view.VoicesMenu(), VoicesCode(*options.voices));
    if (options.channel)
        Choose(view.ChannelMenu(),
               *options.channel < 0 ? kAllChannelsCode : ChannelCode(*options.channel + 1));
    // Without any gear a newcomer plays on the keys before him.
    view.ChooseSource(options.midi.value_or(ComputerKeyboard::kName));
}

bool VexaWindow::QuitRequested() {
    if (session) {
        Hide();
        return false;
    }
    // Asked again, it finds nothing that is not saved.
    if (!attached && !mainView->MayGiveUp([this] { PostMessage(B_QUIT_REQUESTED); }))
        return false;
    be_app->PostMessage(B_QUIT_REQUESTED);
    return true;
}

} // namespace vexa
