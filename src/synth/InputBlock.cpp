// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/InputBlock.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

constexpr double kRampSeconds = 0.01;

} // namespace

void InputBlock::Advance(double rate, std::size_t newSmooth, std::size_t newOffset,
                         std::size_t count) noexcept {
    smooth = newSmooth;
    offset = newOffset;
    wasFilled = std::exchange(filled, false);
    const auto length =
        std::max(smooth, static_cast<std::size_t>(std::max(1.0, std::floor(rate * kRampSeconds))));
    for (std::size_t m = 0; m < kMacros; m++) {
        Ramp<float>& ramp = ramps[m];
        ramp.Aim(macros[m].value, begun ? length : 0, offset);
        starts[m] = ramp;
        ramp.Pass(count);
        macros[m].now = ramp.Now();
    }
    begun = true;
}

const float* const* InputBlock::Fill(const PlaneSource& f, std::span<RunningVoice* const> voices,
                                     const ControllerTable& controllers, const OwnControllers& own,
                                     double dt, std::size_t count) noexcept {
    const std::span<const FunctionInput> inputs = f.Inputs();
    // What has come while nothing was heard is there at once.
    const bool goesOn = wasFilled && source == &f;
    source = &f;
    filled = true;
    for (std::size_t n = 0; n < inputs.size(); n++) {
        const FunctionInput input = inputs[n];
        float* to = space->values[n].data();
        arrays[n] = to;
        const bool isControl = input.kind == FunctionInput::Kind::Controller;
        if (isControl)
            controls[n].Aim(controllers[input.number], goesOn ? smooth : 0, offset);
        for (std::size_t k = 0; k < voices.size(); k++, to += count) {
            switch (input.kind) {
            case FunctionInput::Kind::Macro:
                Write(starts[input.number], to, count);
                break;
            case FunctionInput::Kind::Velocity:
                std::fill_n(to, count, voices[k]->vel);
                break;
            case FunctionInput::Kind::Key:
                std::fill_n(to, count, voices[k]->key);
                break;
            case FunctionInput::Kind::Time:
                for (std::size_t i = 0; i < count; i++)
                    to[i] = static_cast<float>(static_cast<double>(voices[k]->age + i) * dt);
                break;
            case FunctionInput::Kind::Controller:
                Ramp<float> control = controls[n];
                RunningVoice& v = *voices[k];
                const std::size_t which = own.Which(int32(input.number), v.own);
                if (which < kOwnControllers) {
                    Ramp<float>& owned = v.owned[which];
                    owned.Aim(v.own[which] >= 0 ? v.own[which] : float(controllers[input.number]),
                              v.age > 0 ? smooth : 0, offset);
                    control = owned;
                    owned.Pass(count);
                }
                Write(control, to, count);
                break;
            }
        }
        if (isControl)
            controls[n].Pass(count);
    }
    for (RunningVoice* v : voices)
        v->age += count;
    return arrays.data();
}

} // namespace vexa
