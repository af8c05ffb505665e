// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaView.h"

#include "app/Alerts.h"
#include "app/Attachment.h"
#include "app/ExpressionFeedback.h"
#include "app/MessageCodes.h"
#include "app/PlaneControls.h"
#include "app/plane/PlaneDesk.h"
#include "instrument/SoundParts.h"
#include "kits/interface/Alert.h"
#include "kits/interface/Control.h"
#include "kits/interface/Gesture.h"
#include "kits/interface/Menu.h"
#include "kits/media/AudioSystem.h"
#include "kits/midi/MidiRoster.h"
#include "kits/support/Published.h"
#include "views/EnvView.h"
#include "views/R2RFView.h"
#include "views/Theme.h"
#include "views/plane/PlaneOverlay.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace vexa {

namespace {

constexpr uint32 kLeftTop = B_FOLLOW_LEFT | B_FOLLOW_TOP;

constexpr float kPlaneUnitsPerPixel = 0.05F;
/// The place and height of the envelope editors, in pixels.
constexpr float kEditorLeft = 440;
constexpr float kEditorHeight = 92;
/// The margin between the view's edges and its contents, in pixels.
constexpr float kViewMargin = 10;

constexpr const char* kDeviceGone =
    "The audio device has disappeared; there is no sound until it is back.";

/// What it means to the author of a formula that there is no add-on of it. The add-on may have been
/// refused because, unlike most, it is slower than the formula.
constexpr const char* kPlaysWithoutAddon = "The formula plays all the same. Only the form that gcc "
                                           "makes of it, which is faster as a rule, "
                                           "is missing.";

} // namespace

VexaView::VexaView(BRect frame, const char* name, const kits::ProgramFolders& folders,
                   Attachment* plugin, std::shared_ptr<Settings> remembered)
    : BView(frame, name, B_FOLLOW_ALL_SIDES, B_WILL_DRAW | B_PULSE_NEEDED),
      folders(folders),
      plugin(plugin),
      settings(std::move(remembered)),
      instrument(folders, plugin ? Addons::None : Addons::Following),
      formulas(*be_plain_font()) {
    instrument.SetUser(UsualAuthor());
    AddPlaneControls();
    AddFileButtons();
    AddMenus();
    AddEnvelopes();
    AddFeedback();
    ColorsChanged();
    slots.Begin(ConfirmedSound(), {.name = "", .saved = ConfirmedSound()});
    if (plugin)
        StartAttached();
    else
        StartGraph();
    BeginHistory();
    kits::AtGestureEdges([this] { NoteSteps(); });
}

VexaView::~VexaView() {
    closing = true;
    if (plugin)
        OfferEdits();
    else
        graph->CloseRecording();
    kits::AtGestureEdges(nullptr);
    keyboard.ReleaseAll();
    desk->LetGo();
    piano.ReleaseAll();
}

void VexaView::AddPlaneControls() {
    plane = new R2RFView({10, 10, 310, 310}, "R2RFView", {0, 0}, {0.5F, 0.5F}, kPlaneUnitsPerPixel,
                         B_FOLLOW_NONE);
    plane->SetToolTip("Blue is positive, red negative. Right button: save the picture. "
                      "Esc: silence.");
    AddChild(plane);
    AddOverlay();

    fields.Add(*this, FunctionField::Expression, {6, 317, 310, 327});
    Field(FunctionField::Expression).SetModificationMessage(new BMessage(kExpressionTypedCode));
    Field(FunctionField::Expression).SetEscapeAction([this] { return TakeBackSlip(); });
    fields.Add(*this, FunctionField::Width, {formulas.ClearOf(formulas.WidthEnd()), 345, 230, 355});
    for (const auto id : {FunctionField::LinkFunctionX, FunctionField::LinkFunctionY,
                          FunctionField::LinkScreenX, FunctionField::LinkScreenY})
        fields.Add(*this, id, formulas.FieldFrame(id));
    planeControls = std::make_unique<PlaneControls>(fields, *plane);
}

/// Adds the overlay, with the look that the plane had last.
void VexaView::AddOverlay() {
    desk = std::make_unique<PlaneDesk>(*this);
    overlay = new PlaneOverlay(*plane, *desk);
    const std::string key = settings->Get(kBrightnessSetting);
    const auto curves = BrightnessCurves();
    if (const auto row = std::ranges::find(curves, key, &BrightnessRow::key); row != curves.end()) {
        overlay->SetBrightness(row->curve);
    } else {
        std::string keys = "one of";
        for (const BrightnessRow& allowed : curves)
            keys += (&allowed == curves.data() ? " " : ", ") + std::string(allowed.key);
        settings->TellWrong(kBrightnessSetting, keys);
    }
    overlay->SetRelief(settings->Get(kLandscapeSetting));
    overlay->WatchLook([this] {
        const auto curve = static_cast<std::size_t>(overlay->Curve());
        settings->Set(kBrightnessSetting, std::string(BrightnessCurves()[curve].key));
        settings->Set(kLandscapeSetting, overlay->IsRelief());
    });
    plane->ShowMarks(false);
}

void VexaView::AddFileButtons() {
    const struct {
        const char* label;
        uint32 code;
        const char* help;
    } buttons[] = {{"Save f(x,y)", kSaveFunctionCode, "Saves the terrain alone, for other sounds"},
                   {"Load f(x,y)", kLoadFunctionCode, "Puts another terrain below the orbits"},
                   {"Save Sound", kSaveSoundCode, "Saves the sound under a name of your choice"},
                   {"Load Sound", kLoadSoundCode, "Opens a sound from a file"}};
    BRect frame = {240, 345, 310, 370};
    // All labels have the font size that the widest one needs.
    float size = be_plain_font()->Size();
    for (const auto& row : buttons)
        size = std::min(size, kits::FittingFontSize(row.label, frame.Width() - 6));
    for (const auto& row : buttons) {
        auto* button = new BButton(frame, row.label, row.label, new BMessage(row.code), kLeftTop);
        button->SetFontSize(size);
        button->SetHelp(row.help);
        AddChild(button);
        frame = frame.OffsetByCopy(0, 30);
    }
    const float top = std::ceil(formulas.LinkBaseline() + formulas.Descent()) + 4;
    auto* sample = new BButton({kViewMargin, top, kViewMargin + 90, top + 25}, "Load Sample",
                               "Load Sample", new BMessage(kLoadSampleCode), kLeftTop);
    sample->SetFontSize(size);
    sample->SetHelp("Winds a sound file into a spiral, or makes a terrain of a picture");
    AddChild(sample);
    fields.Add(*this, FunctionField::Frequency, formulas.FieldFrame(FunctionField::Frequency));
    Field(FunctionField::Frequency).SetEnabled(false);
}

void VexaView::AddMenus() {
    auto* voicesPopUp = new BPopUpMenu("voices");
    voicesMenu = voicesPopUp;
    for (int32 n = 1; n <= kMostVoices; n++) {
        const std::string label = "max. " + std::to_string(n) + (n == 1 ? " voice" : " voices");
        voicesMenu->AddItem(new BMenuItem(label.c_str(), new BMessage(VoicesCode(n))));
    }
    channelMenu = new BPopUpMenu("midi channel");
    channelMenu->SetUsual("all channels");
    channelMenu->AddItem(new BMenuItem("all channels", new BMessage(kAllChannelsCode)));
    channelMenu->AddItem(new BSeparatorItem);
    for (int32 n = 1; n <= 16; n++) {
        const std::string label = "channel " + std::to_string(n);
        channelMenu->AddItem(new BMenuItem(label.c_str(), new BMessage(ChannelCode(n))));
    }
    channelMenu->SetTargetForItems(this);

    const BRect frequency = formulas.FieldFrame(FunctionField::Frequency);
    const float top = frequency.bottom + 5;
    const struct {
        const char* name;
        BMenu* menu;
        BRect frame;
        const char* help;
    } bars[] = {
        // The source's menu is beside the sample's button, above the channel's.
        {"Midi Source",
         &sources.Menu(),
         {108, frequency.top - 31, 230, frequency.top},
         "What plays the notes"},
        {"Midi Device", voicesMenu, {10, top, 110, top}, "How many notes sound at once"},
        {"Midi Channel", channelMenu, {120, top, 220, top}, "The MIDI channel that is heard"},
    };
    for (const auto& row : bars) {
        auto* bar = new BMenuBar(row.frame, row.name, kLeftTop, B_ITEMS_IN_ROW, false);
        menuBars.push_back(bar);
        AddChild(bar);
        bar->AddItem(row.menu);
        bar->Children().back()->SetHelp(row.help);
    }

    if (plugin)
        return;
    if (BMidiRoster* roster = BMidiRoster::MidiRoster())
        roster->StartWatching(BMessenger(this));
    sources.Fill(followsPrograms);
}

void VexaView::AddEnvelopes() {
    for (std::size_t i = 0; i < envelopes.size(); i++) {
        const EnvelopePlace& place = EnvelopePlaces()[i];
        const BRect frame = {kEditorLeft, EnvelopeTops()[i], Bounds().right - kViewMargin,
                             EnvelopeTops()[i] + kEditorHeight};
        envelopes[i] =
            new EnvView(frame, "EnvView", place.minimum, place.maximum, kEnvelopeTimeRange,
                        B_FOLLOW_LEFT_RIGHT, Colors().editor, Colors().envelopes[i]);
        envelopes[i]->SetAccessibleName(NameOfEnvelope(i));
        envelopes[i]->SetHelp(NameOfEnvelope(i) +
                              "\nA click adds a point, a drag moves it, the right button removes "
                              "it; a double click on it lets you type its numbers");
        Engine().parameters.*place.target = envelopes[i];
        AddCoefficients(place.group);
        AddChild(envelopes[i]);
    }
    for (const auto first :
         {ParameterId::Fx, ParameterId::C0x0, ParameterId::Fy, ParameterId::C0y0})
        AddCoefficients(ParameterOf(first).group);
}

void VexaView::AddCoefficients(std::string_view group) {
    for (const Parameter& row : ParametersOf(group))
        fields.Add(*this, row, formulas.FieldFrame(row.id));
}

/// Adds the feedback last, as its hint covers other views.
void VexaView::AddFeedback() {
    feedback = std::make_unique<ExpressionFeedback>(*this, Field(FunctionField::Expression), *plane,
                                                    Engine());
    instrument.Watch([this](const PlaneFunction& f) { feedback->ShowSounding(f); });
}

const FormulaHint& VexaView::Hint() const {
    return feedback->Hint();
}

const PlaneFunction& VexaView::ShownFunction() const {
    return feedback->Shown();
}

void VexaView::StartGraph() {
    const auto alert = [this](const char* text) {
        // Whoever has asked for no sound knows that there is none.
        if (kits::AudioSystemsToTry().front() == kits::AudioSystem::None)
            return;
        // When the view closes, a device that was never connected fails to disconnect. There is
        // nothing that a person could do about it.
        if (closing)
            std::fprintf(stderr, "vexa: %s\n", text);
        else
            ErrorAlert(text, graph->DeviceFault());
    };
    graph = std::make_unique<AudioGraph>(Engine(), alert);
    if (graph->Start())
        ShowSound();
    else
        std::fprintf(stderr, "vexa: there is no sound: %s\n", graph->DeviceFault().c_str());
    sources.ConnectTo(graph->Consumer());
}

/// Makes the plane show the orbits of the sounding notes.
void VexaView::ShowSound() {
    plane->SetSoundParam(&Engine().controllers, &Engine().parameters, &Engine().voices);
}

float VexaView::PreferredWidth() const {
    return std::ceil(formulas.Right()) + kViewMargin;
}

float VexaView::LeastWidth() const {
    return std::ceil(formulas.Right()) + 1;
}

void VexaView::ColorsChanged() {
    SetViewColor(Colors().panel);
    for (BView* bar : menuBars)
        bar->SetViewColor(Colors().panel);
    for (std::size_t i = 0; i < envelopes.size(); i++)
        envelopes[i]->SetColors(Colors().editor, Colors().envelopes[i]);
}

void VexaView::SetClassic(bool on) {
    plane->ShowMarks(on);
    if (on != overlay->IsHidden())
        on ? overlay->Hide() : overlay->Show();
    namesSource = !on;
    ShowSource();
}

void VexaView::Draw(BRect) {
    formulas.Draw(*this);
}

void VexaView::Pulse() {
    EndJoining();
    Tend();
    feedback->Pulse();
    learn.Pulse(fields, Engine().controllers);
}

/// Does the periodic work that continues in a hidden window.
void VexaView::Tend() {
    kits::CollectRetired();
    settings->Pulse();
    FollowMacros();
    // If compiling the add-on fails, the formula itself plays on.
    const FunctionReport addon = instrument.Collect();
    if (!addon)
        Print(addon);
    // One alert for all faults, which does not block the user.
    std::string text;
    for (const std::string& alert : addon.alerts)
        text += (text.empty() ? "" : "\n\n") + alert;
    if (!text.empty())
        ShowErrorAlert(text, addon.text, kPlaysWithoutAddon);
}

void VexaView::WatchSound() {
    Tend();
    if (plugin)
        return WatchPlugin();
    switch (graph->Watch()) {
    case AudioGraph::DeviceNews::None:
        break;
    case AudioGraph::DeviceNews::Gone:
        // This alert must not wait for an answer: sound and MIDI sources come back without a user.
        ShowErrorAlert(kDeviceGone);
        break;
    case AudioGraph::DeviceNews::There:
        std::fprintf(stderr, "vexa: the audio device is there; playing through %s\n",
                     graph->DeviceName().c_str());
        BAlert::Withdraw(kDeviceGone);
        ShowSound();
        break;
    }
}

} // namespace vexa
