// SPDX-License-Identifier: GPL-3.0-or-later
// The name under which audio and MIDI systems show the program.
#pragma once

#include <string>

namespace kits {

/// Returns the name that JACK and ALSA show for the program: "Vexa" unless another was set. JACK
/// numbers further programs of the same name. Any thread.
const std::string& ClientName();

/// Sets that name. It must be called before anything of audio or MIDI is opened, while there is
/// only one thread.
void SetClientName(const std::string& name);

} // namespace kits
