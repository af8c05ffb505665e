// SPDX-License-Identifier: GPL-3.0-or-later
// Names of the parts of a sound, for a person, and the parts in which two sounds differ.
#pragma once

#include "documents/Sound.h"
#include "synth/ParameterTable.h"

#include <string>

namespace vexa {

/// Returns a coefficient's name for a person, as in "drift of centre x, velocity".
std::string NameOf(const Parameter& row);
/// Returns an envelope's name for a person, as in "envelope of radius x", by its number in
/// EnvelopePlaces().
std::string NameOfEnvelope(std::size_t envelope);

/// Returns the name of the part in which two sounds differ, such as "formula" or "envelope of
/// radius x"; both names, joined by "and", if there are two such parts; "several parts" if there
/// are more. Empty if the sounds are equal. Any thread.
std::string Difference(const Sound& from, const Sound& to);

/// Returns true if two sounds differ at most in their authors and in data that documents do not
/// contain: the texts that belong to other kinds of functions than theirs. Any thread.
bool AreAlike(Sound a, const Sound& b);

} // namespace vexa
