// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/strip/MacroKnobs.h"

#include "app/Alerts.h"
#include "app/Attachment.h"
#include "app/NumberStep.h"
#include "app/VexaView.h"
#include "app/strip/Knob.h"
#include "documents/NumberDoubt.h"
#include "kits/interface/Control.h"
#include "kits/support/NumberText.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr uint32 kValueCode = FourCC("MacV");
constexpr uint32 kControllerCode = FourCC("MacC");

// In pixels.

constexpr float kCellWidth = 56;
constexpr float kBetweenCells = 6;
constexpr float kKnobSize = 34;
constexpr float kKnobGap = 2;
constexpr float kMacroLabelSize = 10;
constexpr const char* kControllerLabel = "Ctl";

BFont LetterFont() {
    BFont font = *be_plain_font();
    font.SetFace(B_ITALIC_FACE);
    return font;
}

BFont SmallFont() {
    BFont font = *be_plain_font();
    font.SetSize(kMacroLabelSize);
    return font;
}

std::string Letter(std::size_t macro) {
    return std::string(1, static_cast<char>('a' + macro));
}

float ControllerLabelWidth() {
    return std::ceil(SmallFont().StringWidth(kControllerLabel)) + 3;
}

} // namespace

MacroKnobs::MacroKnobs(VexaView& mainView)
    : BView({0, 0, PreferredWidth(), PreferredHeight()}, "Macros", B_FOLLOW_NONE, B_WILL_DRAW),
      mainView(mainView) {
    SetViewColor(Colors().panel);
    for (std::size_t i = 0; i < kMacros; i++)
        AddCell(i);
    Refresh();
}

void MacroKnobs::ColorsChanged() {
    SetViewColor(Colors().panel);
}

float MacroKnobs::PreferredHeight() {
    return kKnobSize + 2 * (1 + kKnobGap + BTextControl::PreferredHeight());
}

float MacroKnobs::PreferredWidth() {
    return kMacros * (kCellWidth + kBetweenCells) - kBetweenCells - 1;
}

BMessage* MacroKnobs::MessageOf(uint32 code, std::size_t macro) const {
    auto* message = new BMessage(code);
    message->AddInt32("macro", static_cast<int32>(macro));
    return message;
}

void MacroKnobs::AddCell(std::size_t macro) {
    Cell& cell = cells[macro];
    const std::string letter = Letter(macro);
    const float left = static_cast<float>(macro) * (kCellWidth + kBetweenCells);
    const float right = left + kCellWidth - 1;
    cell.left = left;
    cell.knob = new Knob({right - kKnobSize, 0, right, kKnobSize}, ("knob " + letter).c_str(),
                         kInitialMacro);
    cell.knob->OnTurn([this, macro](float value) {
        if (!cells[macro].isHosts)
            mainView.Played().EditMacroValue(macro, kits::ShortText(value));
        ShowValues();
    });
    float top = kKnobSize + 1 + kKnobGap;
    const float height = BTextControl::PreferredHeight();
    cell.value = new BTextControl({left, top, right, top + height}, ("macro " + letter).c_str(),
                                  nullptr, "", MessageOf(kValueCode, macro));
    cell.knob->OnType([field = cell.value] {
        field->MakeFocus();
        field->SelectAll();
    });
    top += height + 1 + kKnobGap;
    cell.controller = new BTextControl({left + ControllerLabelWidth(), top, right, top + height},
                                       ("controller " + letter).c_str(), nullptr, "",
                                       MessageOf(kControllerCode, macro));
    const auto step = [](BTextControl& field, const NumberRange& range, const std::string& usual) {
        field.SetStepping([range](const std::string& text, int steps, uint32 modifiers) {
            return Stepped(text, steps, modifiers, range);
        });
        field.SetReset(usual);
    };
    step(*cell.value, {0, 1}, kits::ShortText(kInitialMacro));
    step(*cell.controller, {0, 127, true},
         std::to_string(kFirstMacroController + static_cast<int32>(macro)));
    AddChild(cell.knob);
    for (BTextControl* field : {cell.value, cell.controller}) {
        field->SetTarget(this);
        AddChild(field);
    }
}

void MacroKnobs::Refresh() {
    ShowUse();
    Learn();
    ShowValues();
}

/// While the field of a controller has the keyboard focus, takes the first controller that moves.
void MacroKnobs::Learn() {
    std::size_t asking = 0;
    while (asking < kMacros && !cells[asking].controller->IsFocus())
        asking++;
    if (asking != learner) {
        learner = asking;
        learn.reset();
        if (asking < kMacros)
            learn.emplace(mainView.Engine().controllers);
    }
    const std::optional<int> number = learn ? learn->Moved() : std::nullopt;
    if (!number)
        return;
    learn.reset();
    cells[asking].controller->Type(std::to_string(*number).c_str());
    cells[asking].controller->Confirm();
}

/// Dims the macros that the function does not use, and those that the host sets.
void MacroKnobs::ShowUse() {
    const PlaneFunction& shown = mainView.ShownFunction();
    const bool isSame = &shown.Source() == &function.Source();
    function = shown;
    const std::span<const FunctionInput> inputs = function.Source().Inputs();
    for (std::size_t i = 0; i < kMacros; i++) {
        const FunctionInput macro{FunctionInput::Kind::Macro, static_cast<unsigned char>(i)};
        Cell& cell = cells[i];
        if (isSame && cell.isHosts == mainView.HostSetsMacro(i))
            continue;
        cell.isHosts = mainView.HostSetsMacro(i);
        cell.used = std::find(inputs.begin(), inputs.end(), macro) != inputs.end();
        cell.knob->SetDimmed(!cell.used || cell.isHosts);
        cell.value->SetEnabled(cell.used && !cell.isHosts);
        cell.controller->SetEnabled(cell.used);
        MarkFields(i);
        Invalidate();
    }
}

/// Shows the sound's macro values and controllers, but keeps text that is being typed.
void MacroKnobs::ShowValues() {
    const Instrument& instrument = mainView.Played();
    for (std::size_t i = 0; i < kMacros; i++) {
        Cell& cell = cells[i];
        const Function::MacroTexts& texts = instrument.State().function.macros[i];
        cell.knob->SetValue(instrument.Engine().macros[i].value);
        if (cell.value->IsEdited() || cell.controller->IsEdited() ||
            (cell.value->Text() == texts.value && cell.controller->Text() == texts.controller))
            continue;
        cell.value->SetText(texts.value.c_str());
        cell.controller->SetText(texts.controller.c_str());
        MarkFields(i);
    }
}

/// Marks the fields whose text is not used completely. The tool tips say so, or else what the
/// fields are for.
void MacroKnobs::MarkFields(std::size_t macro) {
    const Cell& cell = cells[macro];
    const std::string letter = Letter(macro);
    const std::string use = cell.used ? "" : ", for a formula that has " + letter + " in it";
    const std::string value = cell.value->Text();
    const double number = kits::NumberOf(value);
    std::string doubt = NumberDoubt(value, false);
    if (doubt.empty() && !(number >= 0 && number <= 1))
        doubt = "a macro is 0 to 1; this counts as " + std::string(number < 0 ? "0" : "1");
    cell.value->MarkWrong(!doubt.empty());
    const std::string help =
        (cell.isHosts ? kHostSetsIt : "") + ("The macro " + letter) + ", 0 to 1" + use;
    cell.value->SetHelp(help);
    cell.value->SetToolTip(doubt.c_str());
    cell.knob->SetHelp(help + "\nDrag, wheel or arrow keys; Ctrl click resets it");
    doubt = NumberDoubt(cell.controller->Text(), true);
    cell.controller->MarkWrong(!doubt.empty());
    cell.controller->SetHelp("The MIDI controller that moves " + letter + use +
                             "\nMove one while the keyboard is here, and it is taken");
    cell.controller->SetToolTip(doubt.c_str());
}

void MacroKnobs::MessageReceived(BMessage* message) {
    int32 macro = 0;
    if (message->FindInt32("macro", &macro) != B_OK || macro < 0 || macro >= int32(kMacros))
        return BView::MessageReceived(message);
    const auto index = static_cast<std::size_t>(macro);
    Instrument& instrument = mainView.Played();
    std::string text;
    message->FindString("be:text", &text);
    switch (message->what) {
    case kValueCode:
        instrument.EditMacroValue(index, text);
        break;
    case kControllerCode:
        if (instrument.EditMacroController(index, text) == TextFault::ControllerNumber)
            ErrorAlert(kInvalidController);
        break;
    default:
        return BView::MessageReceived(message);
    }
    ShowValues();
    MarkFields(index);
}

void MacroKnobs::Draw(BRect) {
    const BFont large = LetterFont();
    const BFont small = SmallFont();
    for (std::size_t i = 0; i < kMacros; i++) {
        const Cell& cell = cells[i];
        SetHighColor(cell.used ? Colors().text : Colors().dimText);
        SetFont(&large);
        DrawString(Letter(i), {cell.left + 4, kKnobSize / 2 + 4});
        SetFont(&small);
        SetHighColor(cell.used ? Colors().quietText : Colors().dimText);
        DrawString(kControllerLabel, {cell.left, cell.controller->Frame().top +
                                                     std::round(BTextControl::BaselineOffset())});
    }
}

} // namespace vexa
