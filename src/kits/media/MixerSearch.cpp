// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/media/MixerSearch.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kits {

namespace {

constexpr std::chrono::seconds kSearchPause{1};

} // namespace

MixerSearch::State MixerSearch::Look() {
    if (found)
        return State::Found;
    if (!look.valid()) {
        std::vector<AudioSystem> systems = AudioSystemsToTry();
        std::erase(systems, AudioSystem::None);
        if (systems.empty() || Clock::now() < next)
            return State::InVain;
        // If the system has no thread left, the search runs in `look.get()` below.
        look = std::async(std::launch::async | std::launch::deferred,
                          [systems] { return SystemMixer::Open(systems); });
    }
    if (look.wait_for(std::chrono::seconds(0)) == std::future_status::timeout)
        return State::Looking;
    next = Clock::now() + kSearchPause;
    if (auto opened = look.get()) {
        // Another system may have been chosen meanwhile.
        const std::vector<AudioSystem> wanted = AudioSystemsToTry();
        if (std::find(wanted.begin(), wanted.end(), (*opened)->System()) != wanted.end())
            found = *std::move(opened);
    }
    return found ? State::Found : State::InVain;
}

} // namespace kits
