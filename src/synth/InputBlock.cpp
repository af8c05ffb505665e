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
    length =
        std::max(smooth, static_cast<std::size_t>(std::max(1.0, std::floor(rate * kRampSeconds))));
    for (std::size_t m = 0; m < kMacros; m++) {
        Ramp<float>& ramp = ramps[m];
        ramp.Aim(Wanted(macros[m]), begun ? length : 0, offset);
        starts[m] = ramp;
        ramp.Pass(count);
        macros[m].now = ramp.Now();
    }
    begun = true;
}

void InputBlock::Write(const Common& common, float wanted, Ramp<float>& heard,
                       const RunningVoice& v, float* to, std::size_t count) noexcept {
    if (v.age > 0 && goesOn) {
        heard.Aim(wanted, common.length, offset);
    } else {
        heard = common.value;
        heard.Aim(wanted, 0, offset);
    }
    Write(heard, to, count);
    heard.Pass(count);
}

const float* const* InputBlock::Fill(const PlaneSource& f, std::span<RunningVoice* const> voices,
                                     const ControllerTable& controllers, const OwnControllers& own,
                                     double dt, std::size_t count) noexcept {
    const std::span<const FunctionInput> inputs = f.Inputs();
    // What has come while nothing was heard is there at once.
    goesOn = wasFilled && source == &f;
    source = &f;
    filled = true;
    for (std::size_t n = 0; n < inputs.size(); n++) {
        const FunctionInput input = inputs[n];
        float* to = space->values[n].data();
        arrays[n] = to;
        const bool isControl = input.kind == FunctionInput::Kind::Controller;
        if (isControl)
            controls[n].Aim(controllers[input.number], goesOn ? smooth : 0, offset);
        const Common common = isControl ? Common{controls[n], smooth}
                                        : Common{starts[input.number % kMacros], length};
        for (std::size_t k = 0; k < voices.size(); k++, to += count) {
            RunningVoice& v = *voices[k];
            switch (input.kind) {
            case FunctionInput::Kind::Macro: {
                const Macro& macro = macros[input.number];
                const OwnMacro given = own.OfMacro(input.number, v.own, v.macros);
                Write(common, given.Given() ? Wanted(macro, given) : common.value.End(), v.heard[n],
                      v, to, count);
                break;
            }
            case FunctionInput::Kind::Controller: {
                const double wanted =
                    own.Of(int32(input.number), v.own, double(common.value.End()));
                Write(common, static_cast<float>(wanted), v.heard[n], v, to, count);
                break;
            }
            case FunctionInput::Kind::Velocity:
                std::fill_n(to, count, v.vel);
                break;
            case FunctionInput::Kind::Key:
                std::fill_n(to, count, v.key);
                break;
            case FunctionInput::Kind::Time:
                for (std::size_t i = 0; i < count; i++)
                    to[i] = static_cast<float>(static_cast<double>(v.age + i) * dt);
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
