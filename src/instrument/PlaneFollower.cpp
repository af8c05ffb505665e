// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/PlaneFollower.h"

#include "instrument/ShownFunction.h"

#include <limits>
#include <utility>

namespace vexa {

namespace {

constexpr NoteMoment kNoNote{0.8F, 60.0F / 127, 0};

} // namespace

std::optional<NoteMoment> NewestNote(const VoiceTable& voices) {
    std::optional<NoteMoment> newest;
    double least = std::numeric_limits<double>::infinity();
    for (const voice& slot : voices) {
        const VoiceState::Seen seen = slot.state.Look();
        if (!seen.Active())
            continue;
        const double heldFor = slot.released ? double(slot.heldfor) : 0.0;
        const double t = heldFor + Seconds(slot, seen);
        if (t >= least)
            continue;
        least = t;
        newest = {slot.vel, slot.key, static_cast<float>(t), {slot.own[0], slot.own[1]}};
    }
    return newest;
}

void PlaneFollower::Take(const PlaneFunction& next) {
    f = next;
    changed = true;
}

std::optional<PlaneFunction> PlaneFollower::Next() {
    const std::span<const FunctionInput> heard = f.Source().Inputs();
    if (heard.empty())
        return std::exchange(changed, false) ? std::optional(f) : std::nullopt;
    const NoteMoment note = NewestNote(records.voices).value_or(kNoNote);
    std::array<float, kMostInputs> next = InputsOf(
        f.Source(), note, records.macros, records.controllers, OwnControllers(records.playing));
    // Where they are on their way to: while nothing is rendered they do not arrive.
    for (std::size_t k = 0; k < heard.size(); k++) {
        if (heard[k].kind == FunctionInput::Kind::Macro)
            next[k] = records.macros[heard[k].number].value;
    }
    if (!std::exchange(changed, false) && next == inputs)
        return std::nullopt;
    inputs = next;
    return std::make_shared<ShownFunction>(f, inputs);
}

} // namespace vexa
