// SPDX-License-Identifier: GPL-3.0-or-later
// The controls (knobs) of the plug-ins in a host.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Playing.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace vexa {

/// One control. Its lowest value, which is its default, leaves the setting to the sound.
struct VEXA_REALTIME Control {
    const char* symbol;
    const char* label;
    /// A unit of LV2's units vocabulary; null for none.
    const char* unit;
    float asSound;
    float minimum, maximum;
    bool whole;
    /// The playing setting that the control overrides; null for a macro and for the switch of MPE.
    kits::Shared<float> Playing::*target;

    /// Returns true if the host's value leaves the setting to the sound, as a NaN does too.
    bool LeavesToSound(float value) const { return !(value >= minimum); }
    /// Returns any other value, limited to the control's range and converted to the unit of
    /// `target`.
    float Bounded(float value) const;
};

/// Macros a to d are the second to fifth control. The control kMpeControl makes the instrument
/// expect notes on channels of their own; otherwise MPE's configuration message switches that on
/// and off.
constexpr std::size_t kControls = 12;
constexpr std::size_t kFirstMacroControl = 1;
constexpr std::size_t kMpeControl = 11;
using ControlValues = std::array<float, kControls>;

VEXA_REALTIME const std::array<Control, kControls>& Controls();

/// A value that has a name.
struct ControlPoint {
    float value;
    std::string label;
};

/// Returns the lowest value of a control, and all others if it is a choice between few.
std::vector<ControlPoint> Points(const Control& control);

} // namespace vexa
