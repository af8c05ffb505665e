// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/AudioSystem.h"

#include "kits/media/backends/AudioDevice.h"

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

std::vector<std::string> AudioDeviceNames() {
    std::vector<std::string> names;
    if (const auto jack = OpenJackDevice())
        names.push_back((*jack)->Name());
    for (const AudioSystem system : {AudioSystem::Pulse, AudioSystem::Alsa}) {
        for (std::string& name : RtAudioDevices(system))
            names.push_back(std::move(name));
    }
    return names;
}

} // namespace kits
