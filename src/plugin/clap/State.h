// SPDX-License-Identifier: GPL-3.0-or-later
// A state is what a host keeps of an instance: a sound document, which other programs open as it
// is. A comment before its root has the knobs that do not leave the say to the sound.
#pragma once

#include "plugin/Controls.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include <clap/stream.h>

namespace vexa::clap {

/// The values of the knobs as a host has them.
using Knobs = std::array<double, kControls>;

/// Returns the knobs as they are when all of them leave the say to the sound.
Knobs UntouchedKnobs();

/// The document with the comment, which is left out where no knob has a say.
std::string WithKnobs(std::string document, const Knobs& knobs);
/// Returns the knobs that the comment gives. Knobs of other versions are passed over.
Knobs KnobsOf(std::string_view state);

/// Reads all that a host's stream has; nothing where it fails, or has more than 64 MiB.
std::optional<std::string> ReadAll(const clap_istream& stream);
/// False where the stream takes less than all.
bool WriteAll(const clap_ostream& stream, std::string_view text);

} // namespace vexa::clap
