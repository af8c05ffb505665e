// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/InitialSound.h"

#include <string_view>
#include <utility>

namespace vexa {

Sound InitialSound() {
    Sound sound;
    // The envelopes of the radii. Those of the drift are 0 by default.
    for (const std::size_t i : {2, 3})
        sound.envelopes[i] = {{0, false, 0}, {0.01F, false, 1}, {0.1F, true, 0}};
    constexpr std::pair<std::string_view, const char*> kSaid[] = {
        {"polyphony", "16"}, {"bend", "2"}, {"pedal", "true"}, {"smooth", "10"}};
    sound.playing.emplace();
    for (const auto& [name, text] : kSaid)
        sound.playing->Of(name) = text;
    return sound;
}

} // namespace vexa
