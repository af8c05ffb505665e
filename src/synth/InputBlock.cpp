#include "synth/InputBlock.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

constexpr double kRampSeconds = 0.01;

} // namespace

float MacroRamp::Now() const noexcept {
    if (done >= length)
        return to;
    return from + (to - from) * (static_cast<float>(done) / static_cast<float>(length));
}

void MacroRamp::Advance(float target, double rate, float* values, std::size_t count) noexcept {
    if (!begun) {
        begun = true;
        to = target;
    } else if (target != to) {
        from = Now();
        to = target;
        done = 0;
        length = static_cast<std::size_t>(std::max(1.0, std::floor(rate * kRampSeconds)));
    }
    for (std::size_t i = 0; i < count; i++) {
        values[i] = Now();
        done += done < length ? 1 : 0;
    }
}

void InputBlock::Advance(double rate, std::size_t count) noexcept {
    for (std::size_t m = 0; m < kMacros; m++) {
        ramps[m].Advance(macros[m].value, rate, space->macros[m].data(), count);
        macros[m].now = ramps[m].Now();
    }
}

const float* const* InputBlock::Fill(const PlaneSource& f, std::span<RunningVoice* const> voices,
                                     const ControllerTable& controllers, double dt,
                                     std::size_t count) noexcept {
    const std::span<const FunctionInput> inputs = f.Inputs();
    for (std::size_t n = 0; n < inputs.size(); n++) {
        const FunctionInput input = inputs[n];
        float* to = space->values[n].data();
        arrays[n] = to;
        for (std::size_t k = 0; k < voices.size(); k++, to += count) {
            switch (input.kind) {
            case FunctionInput::Kind::Macro:
                std::copy_n(space->macros[input.number].data(), count, to);
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
                std::fill_n(to, count, controllers[input.number]);
                break;
            }
        }
    }
    for (RunningVoice* v : voices)
        v->age += count;
    return arrays.data();
}

} // namespace vexa
