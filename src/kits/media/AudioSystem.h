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

/// Sets the system that the mixer is to play through. Without a value it is the first that has a
/// device, which is the chosen one from then on. Window thread.
void ChooseAudioSystem(std::optional<AudioSystem> system);
/// Returns the systems to try, in their order: the chosen one, or all. Window thread.
std::vector<AudioSystem> AudioSystemsToTry();

/// Returns the output devices of all systems, in words for a person. Window thread.
std::vector<std::string> AudioDeviceNames();

} // namespace kits
