// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/VexaView.h"

#include "app/Attachment.h"
#include "app/FieldNames.h"
#include "app/FormulaHint.h"
#include "app/MessageCodes.h"
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

BAlert* NewErrorAlert(const std::string& text, const std::string& details = "") {
    auto* alert =
        new BAlert("Error", text.c_str(), "Ok", nullptr, nullptr, B_WIDTH_AS_USUAL, B_STOP_ALERT);
    alert->SetDetails(details);
    return alert;
}

/// Returns the details below an alert, in which its own sentence is not repeated.
std::string Without(const std::string& alert, std::string details) {
    const std::string sentence = alert + ' ';
    if (const std::size_t place = details.find(sentence); place != details.npos)
        details.erase(place, sentence.size());
    return details;
}

} // namespace

void VexaView::ErrorAlert(const std::string& text, const std::string& details) {
    NewErrorAlert(text, details)->Go();
}

void VexaView::ShowError(const kits::Error& error) {
    Print(error);
    if (error.alerts.empty())
        ErrorAlert(error.text);
    for (const std::string& alert : error.alerts)
        ErrorAlert(alert, &alert == &error.alerts.back() ? Without(alert, error.text) : "");
}

void VexaView::Print(const kits::Error& error) {
    if (!error.text.empty())
        std::fprintf(stderr, "vexa: %s\n", error.text.c_str());
}

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
    AddHint();
    ColorsChanged();
    slots[slot].emplace(ConfirmedSound(), "");
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

void VexaView::AddField(FieldId id, std::string_view name, std::string_view text, uint32 code,
                        BRect frame) {
    BTextControl*& field = fields[id.Index()];
    field = new BTextControl(frame, std::string(name).c_str(), nullptr, std::string(text).c_str(),
                             new BMessage(code), kLeftTop);
    field->SetAccessibleName(SpokenName(id));
    field->SetHelp(SpokenName(id));
    AddChild(field);
}

/// Makes the wheel and the arrow keys step the field's number, and a click with Ctrl reset its
/// text.
void VexaView::MakeTurn(FieldId id, std::string_view reset, const NumberRange& range) {
    Field(id).SetStepping([range](const std::string& text, int steps, uint32 modifiers) {
        return Stepped(text, steps, modifiers, range);
    });
    Field(id).SetReset(reset);
}

/// Adds a field with the initial text of a new window.
void VexaView::AddField(FunctionField id, BRect frame) {
    const FunctionFieldRow& row = RowOf(id);
    Function initial;
    AddField(id, row.name, row.text(initial), row.code, frame);
    if (id == FunctionField::Expression)
        return;
    const bool positive = id == FunctionField::Width || id == FunctionField::Frequency;
    MakeTurn(id, row.text(initial), {.least = positive ? 0.01 : -1e6});
}

void VexaView::AddPlaneControls() {
    plane = new R2RFView({10, 10, 310, 310}, "R2RFView", {0, 0}, {0.5F, 0.5F}, kPlaneUnitsPerPixel,
                         B_FOLLOW_NONE);
    plane->SetToolTip("Blue is positive, red negative. Right button: save the picture. "
                      "Esc: silence.");
    AddChild(plane);
    AddOverlay();
    instrument.Watch([this](const PlaneFunction& f) { ShowPlaying(f); });

    AddField(FunctionField::Expression, {6, 317, 310, 327});
    Field(FunctionField::Expression).SetModificationMessage(new BMessage(kExpressionTypedCode));
    Field(FunctionField::Expression).SetEscapeAction([this] { return TakeBackSlip(); });
    AddField(FunctionField::Width, {formulas.ClearOf(formulas.WidthEnd()), 345, 230, 355});
    for (const auto id : {FunctionField::LinkFunctionX, FunctionField::LinkFunctionY,
                          FunctionField::LinkScreenX, FunctionField::LinkScreenY})
        AddField(id, formulas.FieldFrame(id));
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
    AddField(FunctionField::Frequency, formulas.FieldFrame(FunctionField::Frequency));
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
    deviceMenu = new BPopUpMenu("midi source");

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
         deviceMenu,
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
    SetupMidiMenu();
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
        Playing().parameters.*place.target = envelopes[i];
        AddCoefficients(place.group);
        AddChild(envelopes[i]);
    }
    for (const auto first :
         {ParameterId::Fx, ParameterId::C0x0, ParameterId::Fy, ParameterId::C0y0})
        AddCoefficients(ParameterOf(first).group);
}

void VexaView::AddCoefficients(std::string_view group) {
    for (const Parameter& row : ParametersOf(group)) {
        AddField(row.id, row.field, row.initialText, row.code, formulas.FieldFrame(row.id));
        if (row.controller)
            MakeTurn(row.id, row.initialText, {.least = 0, .most = 127, .whole = true});
        else
            MakeTurn(row.id, row.initialText, {});
    }
}

/// Adds the hint as the last child, as it covers the others.
void VexaView::AddHint() {
    const BRect field = Field(FunctionField::Expression).Frame();
    hint = new FormulaHint(field.left, field.bottom + 1, field.right);
    AddChild(hint);
}

void VexaView::StartGraph() {
    // When the view closes, a device that was never connected fails to disconnect.
    const auto alert = [this](const char* text) {
        // Whoever has asked for no sound knows that there is none.
        if (kits::AudioSystemsToTry().front() != kits::AudioSystem::None)
            ErrorAlert(text, closing ? "No audio device was connected." : graph->DeviceFault());
    };
    graph = std::make_unique<AudioGraph>(Playing(), alert);
    if (graph->Start())
        ShowSound();
    else
        std::fprintf(stderr, "vexa: there is no sound: %s\n", graph->DeviceFault().c_str());
    ConnectChosenSource();
}

/// Makes the plane show the orbits of the sounding notes.
void VexaView::ShowSound() {
    plane->SetSoundParam(&Playing().controllers, &Playing().parameters, &Playing().voices);
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
    ShowWhatChanges();
    LearnController();
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
        NewErrorAlert(text, addon.text)->Show();
}

/// While the field of a controller number has the keyboard focus, takes the controller that moves.
void VexaView::LearnController() {
    const auto focused = std::ranges::find_if(Parameters(), [this](const Parameter& row) {
        return row.controller && Field(row.id).IsFocus();
    });
    if (focused == Parameters().end()) {
        learning.reset();
        return;
    }
    if (!learning || learning->field != FieldId(focused->id))
        learning = Learning{focused->id, ControllerLearn(Playing().controllers)};
    const std::optional<int> moved = learning->from.Moved();
    if (!moved)
        return;
    learning.reset();
    if (std::to_string(*moved) == Field(focused->id).Text())
        return;
    Field(focused->id).Type(std::to_string(*moved).c_str());
    Field(focused->id).Confirm();
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
        NewErrorAlert(kDeviceGone)->Show();
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
