// SPDX-License-Identifier: GPL-3.0-or-later
// The main view's feedback on an expression while it is being typed.
#include "app/FormulaHint.h"
#include "app/VexaView.h"
#include "instrument/PlayableFormula.h"
#include "kits/interface/Control.h"
#include "views/R2RFView.h"

namespace vexa {

namespace {

/// The pulses for which the text must stay unchanged before the plane shows it.
constexpr int kPulsesOfRest = 2;

} // namespace

/// Returns the x coordinate of the middle of the faulty character; nothing without a fault.
std::optional<float> VexaView::PlaceOfFault() const {
    if (!faultPlace)
        return std::nullopt;
    const BTextControl& field = Field(FunctionField::Expression);
    return field.Frame().left +
           (field.PositionOf(*faultPlace) + field.PositionOf(*faultPlace + 1)) / 2;
}

/// Makes the plane show the function.
void VexaView::ShowFunction(const PlaneFunction& f) {
    shown.Take(f);
    plane->SetFunction(*shown.Next());
}

/// Takes a new playing function and shows it.
void VexaView::ShowPlaying(const PlaneFunction& f) {
    playing = f;
    typed.reset();
    previewing = false;
    ShowFunction(f);
}

/// Shows a fault or a doubt at once. A valid formula appears on the plane when the user pauses, and
/// stays there while later texts are wrong; it is heard once confirmed.
void VexaView::TakeTyping() {
    BTextControl& field = Field(FunctionField::Expression);
    if (!field.IsEdited())
        return EndTyping();
    const PlayableFormula read = ReadPlayable(field.Text());
    typed = read.formula;
    faultPlace = read.place;
    pulsesOfRest = 0;
    field.SetToolTip(read.reason.c_str());
    if (read.reason.empty())
        hint->Withdraw();
    else
        hint->Explain(read.reason, PlaceOfFault());
}

/// Ends the preview: the field's tool tip and the plane return to the function that plays.
void VexaView::EndTyping() {
    hint->Withdraw();
    typed.reset();
    Field(FunctionField::Expression).SetToolTip(refusal.c_str());
    if (previewing)
        ShowPlaying(playing);
}

/// Called at a pulse. Shows the typed formula, or the playing function with changed inputs, once
/// the last picture has been visible for a while.
void VexaView::ShowWhatChanges() {
    // The field scrolls on painting and with the cursor, so the mark is moved here.
    if (!hint->IsHidden())
        hint->MoveMark(PlaceOfFault());
    if (typed && ++pulsesOfRest >= kPulsesOfRest) {
        previewing = true;
        ShowFunction(std::exchange(typed, nullptr));
    } else if (plane->IsRested()) {
        if (const std::optional<PlaneFunction> next = shown.Next())
            plane->SetFunction(*next);
    }
}

} // namespace vexa
