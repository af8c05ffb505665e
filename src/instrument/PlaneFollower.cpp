// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/PlaneFollower.h"

#include "instrument/ShownFunction.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vexa {

namespace {

/// Seconds since the slot's note-on.
double Age(const voice& slot, VoiceState::Seen seen) {
    return (slot.released ? double(slot.heldfor) : 0.0) + Seconds(slot, seen);
}

} // namespace

std::optional<std::size_t> NewestSlot(const VoiceTable& voices) {
    std::optional<std::size_t> newest;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < voices.size(); i++) {
        const VoiceState::Seen seen = voices[i].state.Look();
        if (!seen.Active() || Age(voices[i], seen) >= least)
            continue;
        least = Age(voices[i], seen);
        newest = i;
    }
    return newest;
}

std::optional<NoteMoment> NewestNote(const VoiceTable& voices) {
    const std::optional<std::size_t> index = NewestSlot(voices);
    if (!index)
        return std::nullopt;
    const voice& slot = voices[*index];
    const auto t = static_cast<float>(Age(slot, slot.state.Look()));
    NoteMoment newest{slot.vel, slot.key, t, OwnOf(slot), {}};
    std::copy(slot.macros.begin(), slot.macros.end(), newest.macros.begin());
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
    const NoteMoment note = NewestNote(records.voices).value_or(kShownNote);
    const OwnControllers own(records.playing, records.macros);
    std::array<float, kMostInputs> next =
        InputsOf(f.Source(), note, records.macros, records.controllers, own);
    // Where they are on their way to: while nothing is rendered they do not arrive.
    for (std::size_t k = 0; k < heard.size(); k++) {
        const std::size_t number = heard[k].number;
        if (heard[k].kind == FunctionInput::Kind::Macro)
            next[k] = Wanted(records.macros[number], own.OfMacro(number, note.own, note.macros));
    }
    if (!std::exchange(changed, false) && next == inputs)
        return std::nullopt;
    inputs = next;
    return std::make_shared<ShownFunction>(f, inputs);
}

} // namespace vexa
