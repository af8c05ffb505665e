// SPDX-License-Identifier: GPL-3.0-or-later
// The numbers of an orbit that a hand on the plane can move.
#pragma once

#include "synth/Coefficients.h"
#include "synth/ParameterTable.h"
#include "synth/SoundRecords.h"

#include <optional>
#include <span>

namespace vexa {

/// An orbit's numbers are where the centre starts, the radii at their envelopes' full height, and
/// how far the centre drifts in a second at their envelopes' full height, all in units of the
/// plane.
enum class OrbitNumber : uint8 { StartX, StartY, RadiusX, RadiusY, DriftX, DriftY };

struct OrbitNumberRow {
    OrbitNumber id;
    /// The name of the number for a person.
    const char* name;
    /// The sum that it is, and the coefficient that is moved: its first one.
    CoefficientGroup sum;
    ParameterId constant;
};
/// Returns the rows in the order of the enumeration.
std::span<const OrbitNumberRow> OrbitNumbers();

/// The note whose orbit is moved: velocity and key, each divided by 127.
struct OrbitNote {
    float vel, key;
};
/// Returns the newest note that sounds; where none does, the note of previews.
OrbitNote NoteInHand(const SoundRecords& records);

/// The number for the note, and what the coefficient has to be for the number to be `value`.
double NumberFor(const OrbitNumberRow& row, const SoundRecords& records, const OrbitNote& note);
double ConstantFor(const OrbitNumberRow& row, const SoundRecords& records, const OrbitNote& note,
                   double value);

/// The largest of 1, 2 and 5 times a power of ten that is no more than `most`, which is above 0.
double TidyStep(double most);
/// The multiple of the step that is next to the value, as a text.
std::string TidyText(double value, double step);

/// The area that the orbit covers from note-on to the end of the time that the key can be drawn
/// held for, or so long as the centre stays finite.
struct Reach {
    double left, bottom, right, top;
};
Reach ReachOf(const SoundRecords& records, const OrbitNote& note);

} // namespace vexa
