// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/PlaneFollower.h"

#include "instrument/ShownFunction.h"
#include "synth/Orbit.h"

#include <algorithm>
#include <utility>

namespace vexa {

std::optional<NoteMoment> NewestNote(const VoiceTable& voices) {
    const int newest = NewestSlot(voices);
    if (newest < 0)
        return std::nullopt;
    const voice& slot = voices[static_cast<std::size_t>(newest)];
    const double heldFor = slot.released ? double(slot.heldfor) : 0.0;
    const double t = heldFor + Seconds(slot, slot.state.Look());
    NoteMoment note{slot.vel, slot.key, t, OwnOf(slot), {}};
    std::copy(slot.macros.begin(), slot.macros.end(), note.macros.begin());
    return note;
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
    // Macros are shown at their targets, because they do not reach them while nothing is rendered.
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
