// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/InputBlock.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr double kRampSeconds = 0.01;

/// Returns true if the input moves to its target in a ramp instead of a step: controllers, macros,
/// and the key in a legato change.
VEXA_REALTIME bool Glides(FunctionInput input) noexcept {
    return input.kind == FunctionInput::Kind::Macro ||
           input.kind == FunctionInput::Kind::Controller || input.kind == FunctionInput::Kind::Key;
}

/// Writes the times of a note from here on, and what they lack, unless `rests` is null.
VEXA_REALTIME void WriteTimes(const RunningVoice& v, double dt, float* to, float* rests,
                              std::size_t count) noexcept {
    for (std::size_t i = 0; i < count; i++) {
        const double t = static_cast<double>(v.stopped ? v.age : v.age + i) * dt;
        to[i] = static_cast<float>(t);
        if (rests)
            rests[i] = TimeRestOf(t);
    }
}

} // namespace

void InputBlock::Restart() noexcept {
    ramps.fill(Ramp<float>());
    source = nullptr;
    begun = false;
}

void InputBlock::Advance(double rate, std::size_t newSmooth, std::size_t newOffset,
                         std::size_t count) noexcept {
    smooth = newSmooth;
    offset = newOffset;
    length =
        std::max(smooth, static_cast<std::size_t>(std::max(1.0, std::floor(rate * kRampSeconds))));
    for (std::size_t m = 0; m < kMacros; m++) {
        Ramp<float>& ramp = ramps[m];
        ramp.Aim(Wanted(macros[m]), begun ? length : 0, offset);
        starts[m] = ramp;
        macros[m].now = ramp.Now();
        ramp.Pass(count);
    }
    begun = true;
}

void InputBlock::ShowMacros() noexcept {
    for (std::size_t m = 0; m < kMacros; m++)
        macros[m].now = begun ? ramps[m].Now() : Wanted(macros[m]);
}

float InputBlock::WantedOf(FunctionInput input, const RunningVoice& v, float common,
                           const OwnControllers& own) const noexcept {
    if (input.kind == FunctionInput::Kind::Key)
        return v.key;
    if (input.kind == FunctionInput::Kind::Controller)
        return static_cast<float>(own.Of(int32(input.number), v.own, double(common)));
    const OwnMacro given = own.OfMacro(input.number, v.own, v.macros);
    return given.Given() ? Wanted(macros[input.number], given) : common;
}

float InputBlock::CommonOf(FunctionInput input, const ControllerTable& controllers) const noexcept {
    switch (input.kind) {
    case FunctionInput::Kind::Macro:
        return Wanted(macros[input.number]);
    case FunctionInput::Kind::Controller:
        return static_cast<float>(controllers[input.number]);
    default:
        return 0;
    }
}

bool InputBlock::IsSteady(const PlaneSource& f, const RunningVoice& v) const noexcept {
    for (std::size_t n = 0; n < f.Inputs().size(); n++) {
        if (Glides(f.Inputs()[n]) && v.heard[n].Varies())
            return false;
    }
    return true;
}

bool InputBlock::IsAskedOf(const PlaneSource& f, const RunningVoice& v,
                           const ControllerTable& controllers,
                           const OwnControllers& own) const noexcept {
    std::size_t n = 0;
    for (const FunctionInput input : f.Inputs()) {
        const Ramp<float>& heard = v.heard[n++];
        if (Glides(input) && !heard.StaysAt(WantedOf(input, v, CommonOf(input, controllers), own)))
            return true;
    }
    return false;
}

void InputBlock::Write(const Common& common, float wanted, Ramp<float>& heard,
                       const RunningVoice& v, float* to, std::size_t count) noexcept {
    if (v.age > 0 && sameSource) {
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
    sameSource = source == &f;
    source = &f;
    for (std::size_t n = 0; n < inputs.size(); n++) {
        const FunctionInput input = inputs[n];
        float* to = space->values[n].data();
        arrays[n] = to;
        const bool hasRest =
            n + 1 < inputs.size() && inputs[n + 1].kind == FunctionInput::Kind::TimeRest;
        float* rests = hasRest ? space->values[n + 1].data() : nullptr;
        const float wanted = CommonOf(input, controllers);
        for (std::size_t k = 0; k < voices.size(); k++, to += count) {
            RunningVoice& v = *voices[k];
            switch (input.kind) {
            case FunctionInput::Kind::Macro:
                Write({starts[input.number], length}, WantedOf(input, v, wanted, own), v.heard[n],
                      v, to, count);
                break;
            case FunctionInput::Kind::Controller:
                Write({Ramp<float>(wanted), smooth}, WantedOf(input, v, wanted, own), v.heard[n], v,
                      to, count);
                break;
            case FunctionInput::Kind::Key:
                Write({Ramp<float>(v.key), v.smooth}, v.key, v.heard[n], v, to, count);
                break;
            case FunctionInput::Kind::Velocity:
                std::fill_n(to, count, v.vel);
                break;
            case FunctionInput::Kind::Time:
                WriteTimes(v, dt, to, rests ? rests + k * count : nullptr, count);
                break;
            case FunctionInput::Kind::TimeRest:
                // Written with the time.
                break;
            }
        }
    }
    GoOn(voices, count);
    return arrays.data();
}

bool InputBlock::Stays(const PlaneSource& f, std::span<RunningVoice* const> voices) const noexcept {
    const auto isTime = [](FunctionInput i) { return i.kind == FunctionInput::Kind::Time; };
    return std::ranges::none_of(f.Inputs(), isTime) &&
           std::ranges::none_of(ramps, &Ramp<float>::Moves) &&
           std::ranges::all_of(voices, [&](const RunningVoice* v) { return IsSteady(f, *v); });
}

void InputBlock::GoOn(std::span<RunningVoice* const> voices, std::size_t count) noexcept {
    for (RunningVoice* v : voices)
        v->age += v->stopped ? 0 : count;
}

} // namespace vexa
