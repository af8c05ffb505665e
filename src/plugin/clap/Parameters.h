// SPDX-License-Identifier: GPL-3.0-or-later
// The knobs as CLAP's parameters.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "plugin/Controls.h"
#include "synth/Macros.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <clap/ext/params.h>

namespace vexa::clap {

/// The macro that a parameter is, of which notes may have values of their own; nothing for others.
VEXA_REALTIME inline std::optional<std::size_t> MacroOf(std::size_t index) {
    const bool isMacro = index >= kFirstMacroControl && index < kFirstMacroControl + kMacros;
    return isMacro ? std::optional(index - kFirstMacroControl) : std::nullopt;
}

/// Returns what a host is told of a parameter. Its number is made of its symbol, so that projects
/// find it whatever else there comes to be.
clap_param_info InfoOf(std::size_t index);
/// The index of the parameter with that number; nothing if there is none.
VEXA_REALTIME std::optional<std::size_t> IndexOf(clap_id id);

/// A value as a person reads it: "as the sound", a word, or a number with its unit.
std::string TextOf(const Control& control, double value);
/// Returns what such a text means, with or without the unit; nothing where it is none, or beyond
/// what the knob allows. The answer is the same in every locale.
std::optional<double> ValueOf(const Control& control, std::string_view text);
/// Returns what the knob holds of a value that a host gives: it is brought within the range, and
/// what leaves the say to the sound, a NaN too, becomes the lowest value.
VEXA_REALTIME double Held(const Control& control, double value);

} // namespace vexa::clap
