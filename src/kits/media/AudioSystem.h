// SPDX-License-Identifier: GPL-3.0-or-later
// The audio systems that the program can play through.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kits {

/// The audio systems, in the order in which they are tried. The system None has no devices.
enum class AudioSystem { Jack, Pulse, Alsa, None };

/// Returns the system called "jack", "pulse", "alsa" or "none"; nothing for another name.
std::optional<AudioSystem> AudioSystemNamed(std::string_view name);

/// Sets the system that the mixer plays through. Without a value, the first system that has a
/// device is taken and is the chosen one from then on. Window thread.
void ChooseAudioSystem(std::optional<AudioSystem> system);
/// Returns the systems to try, in order: only the chosen one, or all. Window thread.
std::vector<AudioSystem> AudioSystemsToTry();

/// Returns the names of the output devices of all systems, for a person to read. Window thread.
std::vector<std::string> AudioDeviceNames();

} // namespace kits
