// SPDX-License-Identifier: GPL-3.0-or-later
// What the main view shows of an expression while it is being typed.
#include "app/FormulaHint.h"
#include "app/VexaView.h"
#include "instrument/PlayableFormula.h"
#include "kits/interface/Control.h"
#include "views/R2RFView.h"

namespace vexa {

namespace {

/// Pulses for which the text has stayed as it is before the plane shows it.
constexpr int kPulsesOfRest = 2;

} // namespace

/// Where the middle of the character is shown at which the fault lies.
std::optional<float> VexaView::PlaceOfFault() const {
    if (!faultPlace)
        return std::nullopt;
    const BTextControl& field = Field(FunctionField::Expression);
    return field.Frame().left +
           (field.PositionOf(*faultPlace) + field.PositionOf(*faultPlace + 1)) / 2;
}

/// Shows the function on the plane from now on.
void VexaView::ShowFunction(const PlaneFunction& f) {
    shown.Take(f);
    plane->SetFunction(*shown.Next());
}

/// The function that plays is another one.
void VexaView::ShowPlaying(const PlaneFunction& f) {
    playing = f;
    typed.reset();
    previewing = false;
    ShowFunction(f);
}

/// Tells a fault at once. A text that is right is shown as a picture when the person pauses, and
/// stays so while the next ones are wrong; it is heard when it is confirmed.
void VexaView::TakeTyping() {
    BTextControl& field = Field(FunctionField::Expression);
    if (!field.IsEdited())
        return EndTyping();
    const PlayableFormula read = ReadPlayable(field.Text());
    typed = read.formula;
    faultPlace = read.place;
    pulsesOfRest = 0;
    field.SetToolTip(read.reason.c_str());
    if (typed)
        hint->Withdraw();
    else
        hint->Explain(read.reason, PlaceOfFault());
}

/// All is as the text says that was confirmed last, or as it was taken.
void VexaView::EndTyping() {
    hint->Withdraw();
    typed.reset();
    Field(FunctionField::Expression).SetToolTip(refusal.c_str());
    if (previewing)
        ShowPlaying(playing);
}

/// At a pulse: what has been typed, or what the function hears, as soon as the last picture has
/// been there for a while.
void VexaView::ShowWhatChanges() {
    // The field scrolls when it is painted, and as the cursor goes.
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
