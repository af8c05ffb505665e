// SPDX-License-Identifier: GPL-3.0-or-later
// The parts of a sound in words that a person understands, and in which of them two sounds differ.
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

/// Names the part of a sound that differs, such as "formula" or "envelope of radius x"; two of them
/// as "the one and the other", and "several parts" for more. Empty where the two are the same. Any
/// thread.
std::string Difference(const Sound& from, const Sound& to);

/// True where two sounds differ in nothing but whose they are, and what is not written of them: the
/// texts of a function that are of another kind than it. Any thread.
bool AreAlike(Sound a, const Sound& b);

} // namespace vexa
