// SPDX-License-Identifier: GPL-3.0-or-later
// The numbers of an orbit that the user can change with the handles on the plane.
#pragma once

#include "synth/Coefficients.h"
#include "synth/ParameterTable.h"
#include "synth/SoundRecords.h"

#include <optional>
#include <span>

namespace vexa {

/// The numbers of an orbit, all in units of the plane: the start of the centre, the radii at the
/// full height of their envelopes, and the drift of the centre per second at the full height of its
/// envelopes.
enum class OrbitNumber : uint8 { StartX, StartY, RadiusX, RadiusY, DriftX, DriftY };

struct OrbitNumberRow {
    OrbitNumber id;
    /// The name of the number for the user.
    const char* name;
    /// The sum that gives the number, and the coefficient that changes with it: the sum's first
    /// one.
    CoefficientGroup sum;
    ParameterId constant;
};
/// Returns the rows in the order of the enumeration.
std::span<const OrbitNumberRow> OrbitNumbers();

/// The note whose orbit is edited ("the note in hand"): velocity and key, each divided by 127.
struct OrbitNote {
    float vel, key;
};
/// Returns the newest sounding note, or the note of previews if none sounds.
OrbitNote NoteInHand(const SoundRecords& records);

/// Return the number for the note, and the coefficient with which the number becomes `value`.
double NumberFor(const OrbitNumberRow& row, const SoundRecords& records, const OrbitNote& note);
double ConstantFor(const OrbitNumberRow& row, const SoundRecords& records, const OrbitNote& note,
                   double value);

/// Returns the largest of 1, 2 and 5 times a power of ten that is at most `most`, which must be
/// positive.
double TidyStep(double most);
/// Returns the multiple of the step that is nearest to the value, as a text.
std::string TidyText(double value, double step);

/// The area that the orbit covers from note-on to the end of the key-down part of the envelopes, or
/// until its centre is no longer finite.
struct Reach {
    double left, bottom, right, top;
};
Reach ReachOf(const SoundRecords& records, const OrbitNote& note);

} // namespace vexa
