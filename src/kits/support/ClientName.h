// SPDX-License-Identifier: GPL-3.0-or-later
// The program's name among those that play.
#pragma once

#include <string>

namespace kits {

/// What JACK and ALSA show the program as: "Vexa" unless it was set. Further programs of the same
/// name are numbered by JACK. Any thread.
const std::string& ClientName();

/// To be called before anything of audio or MIDI is opened, and by the only thread.
void SetClientName(const std::string& name);

} // namespace kits
