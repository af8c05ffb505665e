// SPDX-License-Identifier: GPL-3.0-or-later
// What the user sees of an expression, in its field and on the plane.
#pragma once

#include "app/FormulaHint.h"
#include "instrument/PlaneFollower.h"
#include "synth/PlaneFunction.h"
#include "synth/SoundRecords.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

class BTextControl;

namespace vexa {

class Formula;
class R2RFView;

/// While an expression is typed, shows its fault or doubt at once. A valid formula appears on the
/// plane when the user pauses, and stays there while later texts are wrong; it is heard once
/// confirmed. Tells in the field why a confirmed expression was refused. Window thread.
class ExpressionFeedback {
  public:
    /// Adds the hint to `view`, below the field there, in front of all views that it has by now.
    /// The views and records outlive the object; the plane shows the notes of `records`.
    ExpressionFeedback(BView& view, BTextControl& field, R2RFView& plane,
                       const SoundRecords& records);

    /// Takes the function that sounds from now on and makes the plane show it.
    void ShowSounding(const PlaneFunction& f);
    /// Returns the function that sounds, apart from an add-on with the same values.
    const PlaneFunction& Sounding() const { return sounding; }
    /// Returns the function that the plane shows, which while typing may be the typed one.
    const PlaneFunction& Shown() const { return shown.Function(); }
    const FormulaHint& Hint() const { return *hint; }

    /// To be called after the text in the field has changed by typing.
    void TakeTyping();
    /// Ends the preview: the field's tool tip and the plane return to the function that sounds.
    void EndTyping();
    /// Shows the typed formula, or the sounding function with changed inputs, once the last picture
    /// has been visible for a while.
    void Pulse();

    /// Marks the expression in the field as wrong and not installed, for this reason.
    void Refuse(const std::string& reason) { SetRemark(reason, true); }
    /// Takes the mark away. `doubt`, if not empty, is what the author has probably not meant.
    void Accept(const std::string& doubt) { SetRemark(doubt, false); }
    bool IsRefused() const { return refused; }

  private:
    void SetRemark(const std::string& next, bool refuses);
    void ShowRemark();
    std::optional<float> PlaceOfFault() const;
    void Show(const PlaneFunction& f);

    BTextControl& field;
    R2RFView& plane;
    FormulaHint* hint;
    PlaneFunction sounding{nullfunc};
    PlaneFollower shown;
    /// The plane shows the typed formula, not the function that sounds.
    bool previewing = false;
    /// A typed formula that the plane does not show yet (null if there is none), and in
    /// `pulsesOfRest` the pulses since it was typed.
    std::shared_ptr<const Formula> typed;
    /// The byte position of the fault or doubt in the typed text, if it has one.
    std::optional<std::size_t> faultPlace;
    int pulsesOfRest = 0;
    /// The confirmed expression was refused.
    bool refused = false;
    /// The reason for that, or what is doubtful in the expression that plays.
    std::string remark;
};

} // namespace vexa
