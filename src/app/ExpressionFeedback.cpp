// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ExpressionFeedback.h"

#include "instrument/PlayableFormula.h"
#include "kits/interface/Control.h"
#include "views/R2RFView.h"

#include <utility>

namespace vexa {

namespace {

/// The pulses for which the text must stay unchanged before the plane shows it.
constexpr int kPulsesOfRest = 2;

} // namespace

ExpressionFeedback::ExpressionFeedback(BView& view, BTextControl& field, R2RFView& plane,
                                       const SoundRecords& records)
    : field(field), plane(plane), shown(records) {
    const BRect frame = field.Frame();
    hint = new FormulaHint(frame.left, frame.bottom + 1, frame.right);
    view.AddChild(hint);
}

/// Returns the x coordinate of the middle of the faulty character; nothing without a fault.
std::optional<float> ExpressionFeedback::PlaceOfFault() const {
    if (!faultPlace)
        return std::nullopt;
    return field.Frame().left +
           (field.PositionOf(*faultPlace) + field.PositionOf(*faultPlace + 1)) / 2;
}

/// Makes the plane show the function.
void ExpressionFeedback::Show(const PlaneFunction& f) {
    shown.Take(f);
    plane.SetFunction(*shown.Next());
}

void ExpressionFeedback::ShowSounding(const PlaneFunction& f) {
    sounding = f;
    typed.reset();
    previewing = false;
    Show(f);
}

void ExpressionFeedback::TakeTyping() {
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

void ExpressionFeedback::EndTyping() {
    hint->Withdraw();
    typed.reset();
    ShowRemark();
    if (previewing)
        ShowSounding(sounding);
}

void ExpressionFeedback::Pulse() {
    // The field scrolls on painting and with the cursor, so the mark is moved here.
    if (!hint->IsHidden())
        hint->MoveMark(PlaceOfFault());
    if (typed && ++pulsesOfRest >= kPulsesOfRest) {
        previewing = true;
        Show(std::exchange(typed, nullptr));
    } else if (plane.IsRested()) {
        if (const std::optional<PlaneFunction> next = shown.Next())
            plane.SetFunction(*next);
    }
}

void ExpressionFeedback::SetRemark(const std::string& next, bool refuses) {
    remark = next;
    refused = refuses;
    field.MarkWrong(refused);
    ShowRemark();
}

void ExpressionFeedback::ShowRemark() {
    field.SetToolTip(remark.c_str());
}

} // namespace vexa
