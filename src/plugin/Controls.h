// SPDX-License-Identifier: GPL-3.0-or-later
// The knobs that a host sees.
#pragma once

#include "synth/Playing.h"

#include <array>
#include <cstddef>

namespace vexa {

/// One knob. Its lowest value means that the sound has the say, and is what it begins with.
struct Control {
    const char* symbol;
    const char* label;
    /// A unit of LV2's vocabulary of units; null for none.
    const char* unit;
    float asSound;
    float minimum, maximum;
    bool whole;
    /// What it sets of how the sound is played; null for a macro.
    kits::Shared<float> Playing::*target;

    /// Whether a value that a host gives leaves the say to the sound; a NaN does.
    bool LeavesToSound(float value) const { return !(value >= minimum); }
    /// A value that does not, within what the knob allows, as `target` has it.
    float Bounded(float value) const;
};

/// Macros a to d come second to fifth.
constexpr std::size_t kControls = 11;
constexpr std::size_t kFirstMacroControl = 1;
using ControlValues = std::array<float, kControls>;

const std::array<Control, kControls>& Controls();

} // namespace vexa
