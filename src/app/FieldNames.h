// SPDX-License-Identifier: GPL-3.0-or-later
// The names that are read out for the fields of the main view.
#pragma once

#include "app/FieldId.h"

#include <string>

namespace vexa {

/// Returns the field's name in words that a person understands, as in "drift of centre x,
/// velocity".
std::string SpokenName(FieldId id);

} // namespace vexa
