// SPDX-License-Identifier: GPL-3.0-or-later
// The controls as CLAP parameters.
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

/// Returns the macro of a parameter, which may have a value per note; no value for the other
/// parameters.
VEXA_REALTIME inline std::optional<std::size_t> MacroOf(std::size_t index) {
    const bool isMacro = index >= kFirstMacroControl && index < kFirstMacroControl + kMacros;
    return isMacro ? std::optional(index - kFirstMacroControl) : std::nullopt;
}

/// Returns the description of a parameter for a host. Its id is derived from its symbol, so that
/// projects find it even after others are added.
clap_param_info InfoOf(std::size_t index);
/// Returns the index of the parameter with that id; no value if there is none.
VEXA_REALTIME std::optional<std::size_t> IndexOf(clap_id id);

/// Returns a value as a user reads it: the word for it (Points), or a number with its unit.
std::string TextOf(const Control& control, double value);
/// Returns the value of such a text, with or without the unit, in capitals or not; no value if the
/// text is not valid or out of range. The result is independent of the locale.
std::optional<double> ValueOf(const Control& control, std::string_view text);
/// Returns a host's value as the control stores it: limited to the range. A value that leaves the
/// setting to the sound, including NaN, becomes the lowest value.
VEXA_REALTIME double Held(const Control& control, double value);

} // namespace vexa::clap
