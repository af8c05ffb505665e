// SPDX-License-Identifier: GPL-3.0-or-later
// What two sounds differ in, in a person's words.
#pragma once

#include "documents/Sound.h"
#include "synth/ParameterTable.h"

#include <string>

namespace vexa {

/// "drift of centre x, velocity"
std::string NameOf(const Parameter& row);

/// The part of a sound that differs, such as "formula" or "envelope of Ax"; two of them as "the one
/// and the other", and "several parts" for more. Empty where the two are the same. Any thread.
std::string Difference(const Sound& from, const Sound& to);

} // namespace vexa
