// SPDX-License-Identifier: GPL-3.0-or-later
// What the fields of the main view are called where they are read out.
#pragma once

#include "app/FieldId.h"

#include <string>

namespace vexa {

/// In words that a person understands: "drift of centre x, velocity".
std::string SpokenName(FieldId id);
/// Of an envelope's editor, in the order of EnvelopePlaces(): "envelope of radius x".
std::string SpokenEnvelopeName(std::size_t envelope);

} // namespace vexa
