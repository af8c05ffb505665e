// SPDX-License-Identifier: GPL-3.0-or-later
// The values of a plane function's inputs for one note.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Coefficients.h"
#include "synth/Macros.h"
#include "synth/OwnControllers.h"
#include "synth/PlaneFunction.h"
#include "synth/SoundParam.h"

#include <array>

namespace vexa {

/// One note at one moment.
struct NoteMoment {
    /// Velocity and key, each divided by 127.
    float vel, key;
    /// Seconds since note-on.
    double t;
    OwnValues own = kNoOwnValues;
    OwnMacros macros{};
};

/// Returns one coordinate of the orbit's centre at note-on. Any thread, real-time safe.
VEXA_REALTIME float CentreOf(const CoefficientGroup& group, const sound_param& p,
                             const ControllerTable& controllers, const OwnControllers& own,
                             const NoteMoment& note) noexcept;

/// Returns the values of f.Inputs() for the note, with the macros and controllers as they are now.
/// Any thread, real-time safe.
VEXA_REALTIME std::array<float, kMostInputs> InputsOf(const PlaneSource& f, const NoteMoment& note,
                                                      const Macros& macros,
                                                      const ControllerTable& controllers,
                                                      const OwnControllers& own) noexcept;

} // namespace vexa
