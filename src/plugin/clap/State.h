// SPDX-License-Identifier: GPL-3.0-or-later
// The state that a host stores for an instance: a sound document, which other programs can open. A
// comment before its root holds the controls that override the sound.
#pragma once

#include "plugin/Controls.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include <clap/stream.h>

namespace vexa::clap {

/// The values of the controls, as the host sees them.
using Knobs = std::array<double, kControls>;

/// Returns the values with which all controls leave their settings to the sound.
Knobs UntouchedKnobs();

/// Returns the document with that comment, which is left out if no control overrides the sound.
std::string WithKnobs(std::string document, const Knobs& knobs);
/// Returns the controls that the comment gives. Unknown ones, of other versions, are ignored.
Knobs KnobsOf(std::string_view state);

/// Returns the whole content of a host's stream; no value if reading fails or it has more than 64
/// MiB.
std::optional<std::string> ReadAll(const clap_istream& stream);
/// Returns false if the stream does not take the whole text.
bool WriteAll(const clap_ostream& stream, std::string_view text);

} // namespace vexa::clap
