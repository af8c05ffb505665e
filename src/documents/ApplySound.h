// SPDX-License-Identifier: GPL-3.0-or-later
// Converts a sound's texts and points into the parameters and envelopes that the engine plays.
#pragma once

#include "documents/NumberDoubt.h"
#include "documents/Sound.h"
#include "synth/Macros.h"
#include "synth/ParameterTable.h"
#include "synth/Playing.h"

namespace vexa {

/// The reason why a field's text is rejected.
enum class TextFault {
    None,
    /// A float field whose text is a NaN.
    NotANumber,
    /// A controller field whose number is not in 0..127; its alert is kInvalidController.
    ControllerNumber,
};

/// Sets the row's parameter in `target` to the value of the text, or leaves it unchanged if there
/// is a fault. A text that is not a number counts as 0. The result does not depend on the locale.
/// Window thread.
TextFault ApplyText(const Parameter& row, const std::string& text, sound_param& target);

/// Applies all parameter texts of the sound with ApplyText. Faults are ignored, because reading the
/// document has reported them. Window thread.
void ApplyParameters(const Sound& sound, sound_param& target);

/// Sets the target value of a macro, clamped to 0..1. A text that is not a number counts as 0; a
/// NaN changes nothing. Window thread.
TextFault ApplyMacroValue(const std::string& text, Macro& target);
/// Sets the controller that moves a macro, with the faults of ApplyText. Window thread.
TextFault ApplyMacroController(const std::string& text, Macro& target);

/// Sets the values, clamped to 0..1, and the controllers of the macros from the function's texts.
/// In place of a rejected text the default of a new function applies. Window thread.
void ApplyMacros(const Function& function, Macros& target);

/// Sets the playing settings from their texts. A text in `choices`, the player's own, takes
/// precedence over the sound's text, as if the sound contained it. An invalid text counts as
/// absent, and an absent setting gets its default. `loads` remains unchanged. Window thread.
void ApplyPlaying(const Sound& sound, const PlayingTexts& choices, Playing& target);

/// Replaces and publishes the points of the target's envelopes. Window thread.
void ApplyEnvelopes(const Sound& sound, sound_param& target);

} // namespace vexa
