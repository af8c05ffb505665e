// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/AudioSystem.h"
#include "kits/media/backends/AudioDevice.h"

#include <utility>

namespace kits {

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
