// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/AudioSystem.h"

#include <utility>

namespace kits {

namespace {

std::optional<AudioSystem> chosen;

} // namespace

void ChooseAudioSystem(std::optional<AudioSystem> system) {
    chosen = system;
}

std::vector<AudioSystem> AudioSystemsToTry() {
    if (chosen)
        return {*chosen};
    return {AudioSystem::Jack, AudioSystem::Pulse, AudioSystem::Alsa};
}

std::optional<AudioSystem> AudioSystemNamed(std::string_view name) {
    constexpr std::pair<std::string_view, AudioSystem> names[] = {{"jack", AudioSystem::Jack},
                                                                  {"pulse", AudioSystem::Pulse},
                                                                  {"alsa", AudioSystem::Alsa},
                                                                  {"none", AudioSystem::None}};
    for (const auto& [known, system] : names) {
        if (known == name)
            return system;
    }
    return std::nullopt;
}

} // namespace kits
