// SPDX-License-Identifier: GPL-3.0-or-later
// Makes a sound's texts and points the numbers from which it is heard.
#pragma once

#include "documents/NumberDoubt.h"
#include "documents/Sound.h"
#include "synth/Macros.h"
#include "synth/ParameterTable.h"
#include "synth/Playing.h"

namespace vexa {

/// Tells why a field's text was not taken.
enum class TextFault {
    None,
    /// A float field whose text is a NaN.
    NotANumber,
    /// A controller field whose number is not 0..127; kInvalidController is the alert for it.
    ControllerNumber,
};

/// Sets the parameter that the row is of to what the text means, or leaves it as it is if there is
/// a fault. A text that is no number means 0. The same in every locale. Window thread.
TextFault ApplyText(const Parameter& row, const std::string& text, sound_param& target);

/// Does what ApplyText does for all of the sound's texts. Their faults are passed over: reading the
/// document has told of them. Window thread.
void ApplyParameters(const Sound& sound, sound_param& target);

/// Sets where a macro is to be, within 0..1. A text that is no number means 0; a NaN changes
/// nothing. Window thread.
TextFault ApplyMacroValue(const std::string& text, Macro& target);
/// Sets the controller that moves a macro, as ApplyText does. Window thread.
TextFault ApplyMacroController(const std::string& text, Macro& target);

/// Sets values and controllers of the macros to what the function's texts mean, values within 0..1;
/// what means nothing is as in a fresh function. Window thread.
void ApplyMacros(const Function& function, Macros& target);

/// Sets how the sound is played to what the texts mean. Those in `choices`, the player's own, stand
/// before the sound's, as if the sound had them; what means nothing is as if it were not there.
/// Counts no load. Window thread.
void ApplyPlaying(const Sound& sound, const PlayingTexts& choices, Playing& target);

/// Replaces and publishes the points of the target's envelopes. Window thread.
void ApplyEnvelopes(const Sound& sound, sound_param& target);

} // namespace vexa
