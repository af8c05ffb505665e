// SPDX-License-Identifier: GPL-3.0-or-later
// The text of a parameter in a sound.
#pragma once

#include "documents/Sound.h"
#include "synth/ParameterTable.h"

namespace test {

inline std::string& Text(vexa::Sound& sound, vexa::ParameterId id) {
    return sound.texts[static_cast<std::size_t>(id)];
}

} // namespace test
