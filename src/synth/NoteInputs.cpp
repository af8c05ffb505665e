// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/NoteInputs.h"

#include "kits/support/RealtimeMark.h"

namespace vexa {

namespace {

VEXA_REALTIME float Now(const Macro& macro, const OwnMacro& own) noexcept {
    return own.Given() ? Wanted(macro, own) : float(macro.now);
}

} // namespace

float CentreOf(const CoefficientGroup& group, const sound_param& p,
               const ControllerTable& controllers, const OwnControllers& own,
               const NoteMoment& note) noexcept {
    const Coefficients now = group.Now(p, controllers);
    const Weights weights = now.For(note.vel, note.key, own.Of(now.number, note.own, now.control));
    return static_cast<float>(weights.c0 + weights.rest);
}

std::array<float, kMostInputs> InputsOf(const PlaneSource& f, const NoteMoment& note,
                                        const Macros& macros, const ControllerTable& controllers,
                                        const OwnControllers& own) noexcept {
    std::array<float, kMostInputs> values{};
    std::size_t number = 0;
    for (const FunctionInput& input : f.Inputs()) {
        float& value = values[number++];
        switch (input.kind) {
        case FunctionInput::Kind::Macro:
            value = Now(macros[input.number], own.OfMacro(input.number, note.own, note.macros));
            break;
        case FunctionInput::Kind::Velocity:
            value = note.vel;
            break;
        case FunctionInput::Kind::Key:
            value = note.key;
            break;
        case FunctionInput::Kind::Time:
            value = static_cast<float>(note.t);
            break;
        case FunctionInput::Kind::TimeRest:
            value = TimeRestOf(note.t);
            break;
        case FunctionInput::Kind::Controller:
            value = static_cast<float>(
                own.Of(int32(input.number), note.own, controllers[input.number]));
            break;
        }
    }
    return values;
}

} // namespace vexa
