// SPDX-License-Identifier: GPL-3.0-or-later
// The knobs that a host sees.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Playing.h"

#include <array>
#include <cstddef>
#include <string>
#include <vector>

namespace vexa {

/// One knob. Its lowest value means that the sound has the say, and is what it begins with.
struct VEXA_REALTIME Control {
    const char* symbol;
    const char* label;
    /// A unit of LV2's vocabulary of units; null for none.
    const char* unit;
    float asSound;
    float minimum, maximum;
    bool whole;
    /// The value of how the sound is played that it sets; null for a macro and for the switch of
    /// MPE.
    kits::Shared<float> Playing::*target;

    /// True for a value of a host's that leaves the say to the sound, as a NaN does too.
    bool LeavesToSound(float value) const { return !(value >= minimum); }
    /// A value that does not, within what the knob allows, as `target` has it.
    float Bounded(float value) const;
};

/// Macros a to d come second to fifth; the last one has notes expected on channels of their own,
/// which otherwise the configuration message of MPE begins and ends.
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

/// The lowest value, and all others of a knob that is a choice between few.
std::vector<ControlPoint> Points(const Control& control);

} // namespace vexa
