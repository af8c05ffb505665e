// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MacroStrip.h"

#include "app/VexaView.h"
#include "documents/NumberDoubt.h"
#include "kits/interface/Slider.h"
#include "kits/support/NumberText.h"
#include "views/Theme.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr uint32 kValueCode = FourCC("MacV");
constexpr uint32 kSliderCode = FourCC("MacS");
constexpr uint32 kControllerCode = FourCC("MacC");

// In pixels.

constexpr float kMargin = 10;
constexpr float kGap = 4;
constexpr float kValueWidth = 62;
constexpr float kControllerWidth = 30;
constexpr float kBetweenCells = 14;
constexpr float kWidestSlider = 100;
constexpr float kNarrowestSlider = 40;

constexpr int32 kSliderSteps = 1000;
constexpr const char* kControllerLabel = "Ctl ";

BFont LabelFont() {
    BFont font = *be_plain_font();
    font.SetFace(B_ITALIC_FACE);
    return font;
}

std::string Letter(std::size_t macro) {
    return {static_cast<char>('a' + macro)};
}

std::string Label(std::size_t macro) {
    return Letter(macro) + " = ";
}

float LabelWidth() {
    float width = 0;
    for (std::size_t i = 0; i < kMacros; i++)
        width = std::max(width, LabelFont().StringWidth(Label(i)));
    return std::ceil(width);
}

float ControllerLabelWidth() {
    return std::ceil(LabelFont().StringWidth(kControllerLabel));
}

/// All of a cell but the slider.
float CellWidth() {
    return LabelWidth() + kValueWidth + kGap + 2 * kGap + ControllerLabelWidth() +
           kControllerWidth + kBetweenCells;
}

} // namespace

MacroStrip::MacroStrip(float left, float top, float right, VexaView& mainView)
    : BView({left, top, right, top + PreferredHeight()}, "Macros", B_FOLLOW_LEFT_RIGHT,
            B_WILL_DRAW | B_PULSE_NEEDED),
      mainView(mainView) {
    ColorsChanged();
    const BFont font = LabelFont();
    SetFont(&font);
    const float room = (right - left - 2 * kMargin) / kMacros;
    const float slider = std::clamp(room - CellWidth(), kNarrowestSlider, kWidestSlider);
    for (std::size_t i = 0; i < kMacros; i++)
        AddCell(i, kMargin + float(i) * (CellWidth() + slider), slider);
    ShowUse();
    ShowValues();
}

void MacroStrip::ColorsChanged() {
    SetViewColor(Colors().panel);
}

float MacroStrip::PreferredHeight() {
    return BTextControl::PreferredHeight() + 13;
}

float MacroStrip::LeastWidth() {
    return 2 * kMargin + kMacros * (CellWidth() + kNarrowestSlider);
}

BMessage* MacroStrip::MessageOf(uint32 code, std::size_t macro) const {
    auto* message = new BMessage(code);
    message->AddInt32("macro", static_cast<int32>(macro));
    return message;
}

void MacroStrip::AddCell(std::size_t macro, float left, float width) {
    Cell& cell = cells[macro];
    const std::string letter = Letter(macro);
    const float top = 6;
    const float bottom = top + BTextControl::PreferredHeight();
    baseline = std::round(top + BTextControl::BaselineOffset());
    cell.left = left;
    float x = std::floor(left + LabelWidth());
    cell.value =
        new BTextControl({x, top, x + kValueWidth - 1, bottom}, ("macro " + letter).c_str(),
                         nullptr, "", MessageOf(kValueCode, macro));
    x += kValueWidth + kGap;
    cell.slider =
        new BSlider({x, top, std::floor(x + width) - 1, bottom}, ("slider " + letter).c_str(),
                    nullptr, MessageOf(kSliderCode, macro), 0, kSliderSteps);
    x += std::floor(width) + 2 * kGap + ControllerLabelWidth();
    cell.controller = new BTextControl({x, top, x + kControllerWidth - 1, bottom},
                                       ("controller " + letter).c_str(), nullptr, "",
                                       MessageOf(kControllerCode, macro));
    for (BControl* control :
         {static_cast<BControl*>(cell.value), static_cast<BControl*>(cell.slider),
          static_cast<BControl*>(cell.controller)}) {
        control->SetTarget(this);
        AddChild(control);
    }
}

void MacroStrip::Pulse() {
    ShowUse();
    ShowValues();
}

/// Whether the function uses them.
void MacroStrip::ShowUse() {
    const PlaneFunction& shown = mainView.ShownFunction();
    if (&shown.Source() == &function.Source())
        return;
    function = shown;
    const std::span<const FunctionInput> inputs = function.Source().Inputs();
    for (std::size_t i = 0; i < kMacros; i++) {
        const FunctionInput macro{FunctionInput::Kind::Macro, static_cast<unsigned char>(i)};
        Cell& cell = cells[i];
        cell.used = std::find(inputs.begin(), inputs.end(), macro) != inputs.end();
        cell.value->SetEnabled(cell.used);
        cell.slider->SetEnabled(cell.used);
        cell.controller->SetEnabled(cell.used);
        MarkFields(i);
    }
    Invalidate();
}

/// What the sound says of them, but for what is being typed.
void MacroStrip::ShowValues() {
    const Instrument& instrument = mainView.Played();
    for (std::size_t i = 0; i < kMacros; i++) {
        Cell& cell = cells[i];
        const Function::MacroTexts& texts = instrument.State().function.macros[i];
        const float value = instrument.Playing().macros[i].value;
        cell.slider->SetValue(static_cast<int32>(std::lround(value * kSliderSteps)));
        if (cell.value->IsEdited() || cell.controller->IsEdited() ||
            (cell.value->Text() == texts.value && cell.controller->Text() == texts.controller))
            continue;
        cell.value->SetText(texts.value.c_str());
        cell.controller->SetText(texts.controller.c_str());
        MarkFields(i);
    }
}

/// Marks the fields whose text is not wholly used; the tips say that, or what they are for.
void MacroStrip::MarkFields(std::size_t macro) {
    const Cell& cell = cells[macro];
    const std::string letter = Letter(macro);
    const std::string use = cell.used ? "" : ", for a formula that has " + letter + " in it";
    const std::string value = cell.value->Text();
    const double number = kits::NumberOf(value);
    std::string doubt = NumberDoubt(value, false);
    if (doubt.empty() && !(number >= 0 && number <= 1))
        doubt = "a macro is 0 to 1; this counts as " + std::string(number < 0 ? "0" : "1");
    cell.value->MarkWrong(!doubt.empty());
    const std::string help = "The macro " + letter + ", 0 to 1" + use;
    cell.value->SetToolTip(doubt.empty() ? help.c_str() : doubt.c_str());
    cell.slider->SetToolTip(help.c_str());
    doubt = NumberDoubt(cell.controller->Text(), true);
    cell.controller->MarkWrong(!doubt.empty());
    cell.controller->SetToolTip(
        doubt.empty() ? ("The MIDI controller that moves " + letter + use).c_str() : doubt.c_str());
}

void MacroStrip::MessageReceived(BMessage* message) {
    int32 macro = 0;
    if (message->FindInt32("macro", &macro) != B_OK || macro < 0 || macro >= int32(kMacros))
        return BView::MessageReceived(message);
    const auto index = static_cast<std::size_t>(macro);
    Cell& cell = cells[index];
    Instrument& instrument = mainView.Played();
    int32 step = 0;
    switch (message->what) {
    case kValueCode:
        instrument.EditMacroValue(index, cell.value->Text());
        break;
    case kSliderCode:
        message->FindInt32("be:value", &step);
        instrument.EditMacroValue(index, kits::ShortText(double(step) / kSliderSteps));
        break;
    case kControllerCode:
        if (instrument.EditMacroController(index, cell.controller->Text()) ==
            TextFault::ControllerNumber)
            VexaView::ErrorAlert(kInvalidController);
        break;
    default:
        return BView::MessageReceived(message);
    }
    ShowValues();
    MarkFields(index);
}

void MacroStrip::Draw(BRect) {
    SetHighColor(Colors().edge);
    StrokeLine({0, 0}, {Bounds().right, 0});
    for (std::size_t i = 0; i < kMacros; i++) {
        const Cell& cell = cells[i];
        SetHighColor(cell.used ? Colors().quietText : Colors().dimText);
        DrawString(Label(i), {cell.left, baseline});
        DrawString(kControllerLabel,
                   {cell.controller->Frame().left - ControllerLabelWidth(), baseline});
    }
}

} // namespace vexa
