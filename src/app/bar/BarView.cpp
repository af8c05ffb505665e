// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/bar/BarView.h"

#include "app/Alerts.h"
#include "app/MessageCodes.h"
#include "app/VexaView.h"
#include "app/bar/BarColors.h"
#include "app/bar/LevelMeter.h"
#include "app/bar/RecordButton.h"
#include "kits/interface/Control.h"
#include "kits/interface/Menu.h"
#include "kits/interface/Window.h"
#include "kits/support/NumberText.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr uint32 kRecordCode = FourCC("Reco");
/// The code of the first audio system; the index in `kSystems` is added.
constexpr uint32 kSystemCode = FourCC("ASy0");

constexpr struct {
    kits::AudioSystem system;
    const char* name;
} kSystems[] = {{kits::AudioSystem::Jack, "JACK"},
                {kits::AudioSystem::Pulse, "PulseAudio"},
                {kits::AudioSystem::Alsa, "ALSA"},
                {kits::AudioSystem::None, "no sound"}};

// In pixels.

constexpr float kButtonGap = 8;
constexpr float kBarHeight = 24;
constexpr float kDeviceWidth = 118;
constexpr float kVoicesWidth = 92;
constexpr float kMeterWidth = 64;
constexpr float kRecordWidth = 44;
constexpr float kSilenceWidth = 56;
constexpr float kLeastName = 150;
constexpr float kWidestName = 330;
constexpr float kArrowButtonWidth = 20;
constexpr float kArrowHeight = kBarHeight - 6;
constexpr float kBarInset = 8;

constexpr const char* kVoicesTip = "The voices that sound, of those allowed";
constexpr const char* kLoadTip = ", and the share of the time that computing them takes";
constexpr const char* kElsewhereTip =
    "What is heard is recorded already, into the file that --record names, until Vexa ends";

/// The time for which an announcement is shown, in pulses.
constexpr int kAnnouncementPulses = 60;

std::string NameOf(std::optional<kits::AudioSystem> system) {
    for (const auto& row : kSystems) {
        if (row.system == system)
            return row.name;
    }
    return "";
}

} // namespace

BarView::BarView(BRect frame, VexaView& mainView)
    : BView(frame, "bar", B_FOLLOW_LEFT_RIGHT | B_FOLLOW_TOP,
            B_WILL_DRAW | B_FRAME_EVENTS | B_SEE_THROUGH),
      mainView(mainView) {
    SetViewColor(B_TRANSPARENT_COLOR);
    if (mainView.HasGraph())
        AddDevice();
    silence = new BButton({0, 0, kSilenceWidth, kBarHeight}, "Silence", "Silence",
                          new BMessage(kSilenceCode));
    silence->SetOnDark();
    silence->SetToolTip("Ends all that sounds, at once (Esc)");
    AddChild(silence);
    previous = AddArrow("◀", "previous sound (Page Up)", kPreviousSoundCode);
    next = AddArrow("▶", "next sound (Page Down)", kNextSoundCode);
    undo = AddArrow("↶", "undo (Ctrl Z)", kUndoCode);
    redo = AddArrow("↷", "redo (Ctrl Shift Z)", kRedoCode);
    Arrange();
    Refresh();
}

BButton* BarView::AddArrow(const char* label, const char* words, uint32 code) {
    auto* button =
        new BButton({0, 0, kArrowButtonWidth, kArrowHeight}, words, label, new BMessage(code));
    button->SetOnDark();
    button->SetAccessibleName(words);
    button->SetToolTip(words);
    AddChild(button);
    return button;
}

BarView::~BarView() = default;

void BarView::AddDevice() {
    recorder = std::make_unique<WindowRecorder>(mainView.Graph(), mainView.Folders());
    auto* menu = new BPopUpMenu("device", false, false);
    deviceMenu = menu;
    menu->SetOpening([this](BMenu&) { FillDeviceMenu(); });
    device = new BMenuField({0, 0, kDeviceWidth, kBarHeight}, "audio device", nullptr, menu);
    device->SetOnDark();
    device->SetToolTip("The audio device and its rate; click to choose another one, or the MIDI "
                       "source");
    AddChild(device);
    meter = new LevelMeter(mainView.Graph().Producer().Tap());
    AddChild(meter);
    record = new RecordButton({0, 0, kRecordWidth, kBarHeight}, new BMessage(kRecordCode));
    record->SetTarget(this);
    AddChild(record);
}

/// Fills the menu with the audio systems, then the present items of the menu of MIDI sources.
void BarView::FillDeviceMenu() {
    deviceMenu->RemoveAll();
    const std::optional<kits::AudioSystem> used = mainView.Graph().System();
    for (std::size_t i = 0; i < std::size(kSystems); i++) {
        auto* item =
            new BMenuItem(kSystems[i].name, new BMessage(kSystemCode + static_cast<uint32>(i)));
        deviceMenu->AddItem(item);
        item->SetTarget(this);
        if (kSystems[i].system == used)
            item->SetMarked(true);
    }
    deviceMenu->AddItem(new BSeparatorItem);
    // Audio system and MIDI source are marked independently, so the menu is not in radio mode.
    for (std::size_t i = 0; const BMenuItem* source = mainView.DeviceMenu().ItemAt(i); i++) {
        const bool separates = !source->Message();
        BMenuItem* item = separates
                              ? new BSeparatorItem
                              : new BMenuItem(source->Label(), new BMessage(*source->Message()));
        deviceMenu->AddItem(item);
        item->SetTarget(&mainView);
        item->SetMarked(source->IsMarked());
    }
}

void BarView::MessageReceived(BMessage* message) {
    const uint32 system = message->what - kSystemCode;
    if (message->what == kRecordCode)
        ToggleRecording();
    else if (system < std::size(kSystems) && mainView.HasGraph())
        mainView.Graph().UseSystem(kSystems[system].system);
    else
        BView::MessageReceived(message);
}

void BarView::ToggleRecording() {
    if (!recorder || RecordsElsewhere())
        return;
    if (!recorder->IsRecording()) {
        if (const auto begun = recorder->Begin(mainView.SoundName()); !begun)
            ErrorAlert("The recording cannot begin.", begun.Fault().text);
    } else if (const auto kept = recorder->End(); kept) {
        std::fprintf(stderr, "vexa: recorded %s\n", kept->c_str());
        Announce("recorded " + kept->filename().string());
        record->SetRestingTip("The last recording is\n" + kept->string());
    } else {
        // A pulse may have noticed the end, and there are no further pulses before it returns.
        ShowErrorAlert("The recording is not complete.", kept.Fault().text);
    }
    ShowRecording();
}

/// Returns whether the recording of the command line is in progress.
bool BarView::RecordsElsewhere() const {
    return !IsRecording() && mainView.Graph().Records();
}

void BarView::ShowRecording() {
    if (const bool can = !RecordsElsewhere(); record->IsEnabled() != can) {
        record->SetEnabled(can);
        record->SetRestingTip(can ? "" : kElsewhereTip);
    }
    record->Show(IsRecording() ? std::optional(recorder->Seconds()) : std::nullopt);
}

void BarView::Announce(const std::string& text) {
    announcement = text;
    pulsesLeft = kAnnouncementPulses;
}

void BarView::Refresh() {
    if (pulsesLeft > 0 && --pulsesLeft == 0)
        announcement.clear();
    const std::string next = announcement.empty() ? mainView.Caption() : announcement;
    if (next != caption) {
        caption = next;
        TellPointed();
        SetAccessibleName("sound: " + caption);
        Invalidate(nameBox);
    }
    ShowSteps();
    ShowVoices();
    if (!mainView.HasGraph())
        return;
    ShowDevice();
    meter->Listen(!IsHidden());
    meter->Refresh();
    if (recorder && recorder->HasEnded())
        ToggleRecording();
    ShowRecording();
}

void BarView::ShowSteps() {
    const auto show = [](BButton& button, bool can, const std::string& words) {
        if (button.IsEnabled() != can)
            button.SetEnabled(can);
        if (words != button.ToolTip())
            button.SetToolTip(words.c_str());
    };
    const auto words = [](const char* what, const std::string& step, const char* keys) {
        return what + (step.empty() ? "" : ": " + step) + keys;
    };
    show(*undo, mainView.CanUndo(), words("undo", mainView.UndoName(), " (Ctrl Z)"));
    show(*redo, mainView.CanRedo(), words("redo", mainView.RedoName(), " (Ctrl Shift Z)"));
}

void BarView::ShowVoices() {
    const std::string next = std::to_string(CountHeard(mainView.Engine().voices)) + "/" +
                             std::to_string(mainView.Played().VoiceLimit());
    std::string share;
    if (mainView.HasGraph() && mainView.Graph().IsConnected()) {
        const float spent = mainView.Graph().Producer().Load();
        share = std::to_string(std::lround(spent * 100)) + " %";
    }
    if (next == voices && share == load)
        return;
    voices = next;
    load = share;
    TellPointed();
    Invalidate(voicesBox);
}

kits::AccessibleThing BarView::DescribePart(std::size_t) const {
    kits::AccessibleThing thing;
    thing.role = kits::AccessibleRole::Text;
    thing.name = "voices: " + voices + (load.empty() ? "" : ", load: " + load);
    thing.frame = voicesBox;
    return thing;
}

void BarView::ShowDevice() {
    AudioGraph& graph = mainView.Graph();
    std::string title = NameOf(graph.System());
    if (graph.IsConnected()) {
        title += ' ' + kits::RoundedText(graph.DeviceRate() / 1000, 4) + " kHz";
    } else if (graph.System() != kits::AudioSystem::None) {
        title = title.empty() ? "no device" : title + ": none";
    }
    if (title != deviceMenu->Name()) {
        deviceMenu->SetName(title);
        device->SetAccessibleName("audio device: " + title);
    }
}

void BarView::MouseDown(BPoint where) {
    if (nameBox.Contains(where))
        BMessenger(Window()).SendMessage(BMessage(kDescribeCode));
}

void BarView::MouseMoved(BPoint where, uint32 transit, const BMessage*) {
    pointer = transit == B_EXITED_VIEW ? std::nullopt : std::optional(where);
    TellPointed();
}

/// Makes the tool tip tell what the pointer is on. Without a pointer, as for screen readers, it is
/// that of the sound's name.
void BarView::TellPointed() {
    std::string tip;
    if (!pointer || nameBox.Contains(*pointer))
        tip = caption + "\nClick to say what the sound is (Ctrl I)";
    else if (voicesFit && voicesBox.Contains(*pointer))
        tip = load.empty() ? kVoicesTip : std::string(kVoicesTip) + kLoadTip;
    if (tip != ToolTip())
        SetToolTip(tip.c_str());
}

void BarView::FrameResized(float, float) {
    Arrange();
    Invalidate();
}

float BarView::PreferredWidth() const {
    float width =
        kLeastName + 2 * kArrowButtonWidth + 3 * kButtonGap + kSilenceWidth + kVoicesWidth;
    if (device)
        width += kRecordWidth + kDeviceWidth + kMeterWidth + 3 * kButtonGap;
    return width;
}

/// Places the views from the right; the name has the rest at the left, up to a maximum width. If
/// that is too little, hides the least important views.
void BarView::Arrange() {
    const BRect bounds = Bounds();
    float room = bounds.right - kLeastName - 2 * kArrowButtonWidth - kButtonGap;
    const auto fits = [&room](float width) {
        const bool does = room >= width + kButtonGap;
        room -= does ? width + kButtonGap : 0;
        return does;
    };
    const auto show = [&fits](BView* view, float width) {
        if (view && fits(width) == view->IsHidden())
            view->IsHidden() ? view->Show() : view->Hide();
    };
    show(silence, kSilenceWidth);
    show(record, kRecordWidth);
    show(device, kDeviceWidth);
    show(meter, kMeterWidth);
    voicesFit = fits(kVoicesWidth);
    const float top = std::floor((bounds.Height() - kBarHeight) / 2);
    float right = bounds.right;
    const auto put = [&](BView* view, float width, float height = kBarHeight) {
        if (!view || view->IsHidden())
            return;
        right -= width;
        view->MoveTo(right, top + std::floor((kBarHeight - height) / 2));
        view->ResizeTo(width, height);
        right -= kButtonGap;
    };
    put(silence, kSilenceWidth);
    put(record, kRecordWidth);
    put(meter, kMeterWidth - 1, kBarHeight - 1);
    if (voicesFit) {
        voicesBox = {right - kVoicesWidth, top, right, top + kBarHeight};
        right = voicesBox.left - kButtonGap;
    }
    put(device, kDeviceWidth, BMenuField::PreferredHeight());
    put(redo, kArrowButtonWidth);
    right += kButtonGap;
    put(undo, kArrowButtonWidth);
    const float width = std::clamp(right, 60.0F, kWidestName);
    const float left = std::floor((right - width) / 2);
    nameBox = {left, top, left + width, top + kBarHeight};
    previous->MoveTo(left + 3, top + 3);
    next->MoveTo(left + width - kArrowButtonWidth - 3, top + 3);
}

void BarView::Draw(BRect) {
    const Theme& colors = Colors();
    font_height height;
    GetFontHeight(&height);
    const float baseline =
        std::floor((nameBox.top + nameBox.bottom + height.ascent - height.descent) / 2);
    SetHighColor(kBox);
    FillRoundRect(nameBox, kBoxCorner);
    SetHighColor(kBoxEdge);
    StrokeRoundRect(nameBox, kBoxCorner);
    const std::string shown =
        CutToFit(caption, nameBox.Width() - 2 * (kBarInset + kArrowButtonWidth));
    SetHighColor(colors.barText);
    DrawString(shown,
               {std::floor((nameBox.left + nameBox.right - StringWidth(shown)) / 2), baseline});
    if (!voicesFit)
        return;
    SetHighColor(colors.barQuietText);
    const std::string both = load.empty() ? voices : voices + "  ·  " + load;
    DrawString(both,
               {std::floor((voicesBox.left + voicesBox.right - StringWidth(both)) / 2), baseline});
}

} // namespace vexa
