// SPDX-License-Identifier: GPL-3.0-or-later
// Several cells at once, where nothing but the envelopes and the points moves: what is decided once
// per voice and block is then decided once for all of them. Every sample is the same as it is in
// blocks.
#include "synth/EqualSteps.h"
#include "synth/VoiceRenderer.h"

#include <algorithm>

namespace vexa {

bool VoiceMotion::GoesOn(const Axis& axis, const RunningVoice& v) const noexcept {
    const Weights drift = Of(axis.drift, v);
    const Weights radius = Of(axis.radius, v);
    return v.sums[axis.number].StaysAt(drift.c0) && v.sums[2 + axis.number].StaysAt(drift.rest) &&
           v.sums[4 + axis.number].StaysAt(radius.c0 + radius.rest);
}

bool VoiceMotion::GoesOn(RunningVoice& v, std::size_t cells) const noexcept {
    if (!GoesOn(x, v) || !GoesOn(y, v))
        return false;
    if (!v.released || v.rests)
        return true;
    if (v.stands)
        return false;
    // What stands does so for good: it is enough to look at the end, or a little beyond. The
    // envelopes are followed from where they are afterwards.
    const auto envelopes = v.envelopes;
    const double t = v.t;
    v.t += dt * static_cast<double>((cells + 1) * kMostSamples);
    const bool stands = Stands(v);
    v.t = t;
    v.envelopes = envelopes;
    return !stands;
}

/// Whether a coordinate's radius and the speed of its centre keep their values up to `end`, which
/// is `length` samples away; fills them in.
bool VoiceMotion::HoldsFor(const Axis& axis, RunningVoice& v, double centre, double length,
                           double end, SteadyCoordinate& c) const noexcept {
    const auto first = static_cast<float>(v.t), last = static_cast<float>(end);
    const auto holds = [&](const Axis::NumberedCurve& envelope) {
        return v.envelopes[envelope.number].Holds(envelope.curve, first, last, v.released,
                                                  v.rellevel[envelope.number]);
    };
    const double weight = v.sums[axis.number].Now(), rest = v.sums[2 + axis.number].Now();
    if (!holds(axis.radiusEnvelope) || (weight != 0 && !holds(axis.driftEnvelope)))
        return false;
    const float drifting = weight != 0 ? v.envelopes[axis.driftEnvelope.number].Value() : 0;
    const double step = dt * (drifting * weight + rest);
    c.centre = centre;
    c.drift = RoundedStep(centre, step);
    c.radius = v.sums[4 + axis.number].Now() * v.envelopes[axis.radiusEnvelope.number].Value();
    return AddsTheSame(centre, step, c.drift, centre + length * c.drift);
}

/// Moves a voice whose envelopes keep their values; false, and nothing has moved, for another.
bool VoiceMotion::MoveSteadily(RunningVoice& v, std::size_t cells, std::size_t stride,
                               float* placesx, float* placesy) const noexcept {
    const std::size_t samples = cells * kMostSamples;
    const auto length = static_cast<double>(samples);
    const double step = RoundedStep(v.t, dt);
    const double end = v.t + length * step;
    std::array<double, 2 * kMostCells> phases, sines, cosines;
    SteadyCoordinate placex, placey;
    if (!AddsTheSame(v.t, dt, step, end) || !HoldsFor(x, v, v.cx, length, end, placex) ||
        !HoldsFor(y, v, v.cy, length, end, placey) ||
        !v.x.BeginCells(Turn(x, v, nullptr), cells, phases.data()) ||
        !v.y.BeginCells(Turn(y, v, nullptr), cells, &phases[cells]))
        return false;
    const BlockLoops& loops = Loops();
    // As often as not both coordinates have the same phase.
    const bool joint = std::equal(&phases[0], &phases[cells], &phases[cells]);
    const std::size_t second = joint ? 0 : cells;
    loops.Waves(phases.data(), sines.data(), cosines.data(), joint ? cells : 2 * cells);
    placex.values = cosines.data();
    placex.slopes = sines.data();
    placex.slopeSign = -1;
    placex.steps = v.x.PassCells(cells);
    placex.place = placesx;
    placey.values = &sines[second];
    placey.slopes = &cosines[second];
    placey.slopeSign = 1;
    placey.steps = v.y.PassCells(cells);
    placey.place = placesy;
    placex.stride = placey.stride = stride;
    v.t = end;
    v.cx += length * placex.drift;
    v.cy += length * placey.drift;
    loops.Cells(placex, cells);
    loops.Cells(placey, cells);
    return true;
}

void VoiceMotion::MoveCells(std::span<RunningVoice* const> voices, std::size_t cells,
                            float* placesx, float* placesy) const noexcept {
    const std::size_t stride = voices.size() * kMostSamples;
    for (std::size_t k = 0; k < voices.size();) {
        // Those that do not move steadily in between, side by side.
        std::size_t number = 0;
        bool steady = false;
        while (number < kTogether && k + number < voices.size() && !steady) {
            const std::size_t at = (k + number) * kMostSamples;
            steady = MoveSteadily(*voices[k + number], cells, stride, placesx + at, placesy + at);
            number += steady ? 0 : 1;
        }
        for (std::size_t i = 0; number > 0 && i < cells; i++) {
            const std::size_t at = i * stride + k * kMostSamples;
            Move(voices.subspan(k, number), placesx + at, placesy + at);
        }
        k += number + (steady ? 1 : 0);
    }
}

/// Whether the voice finds nothing new in its slot.
bool VoiceRenderer::GoesOn(const RunningVoice& v, const voice& slot) const noexcept {
    const VoiceState::Seen seen = slot.state.Look();
    if (!v.sounds)
        return !seen.Active();
    return seen.Active() && !seen.Changing() && seen.Changes() == v.changes && !v.ends &&
           v.arrives.StaysAt(1) && v.glide.StaysAt(0) && v.bend.StaysAt(BendOf(v, slot)) &&
           v.expressed == slot.expressed &&
           (!v.scaled ||
            (v.gains[0].StaysAt(slot.gains[0]) && v.gains[1].StaysAt(slot.gains[1]))) &&
           v.own == OwnOf(slot);
}

/// Renders so many whole cells at once; false, and nothing is rendered, where something changes.
bool VoiceRenderer::RenderCells(const PlaneFunction& f, float* left, float* right,
                                std::size_t cells) noexcept {
    if (apart || ears.Apart() || (right && playing.Spread() > 0) || !mix.Stays())
        return false;
    const OwnControllers own(playing, macros);
    const VoiceMotion motion(parameters, controllers, own, 1.0 / sampleRate, 0, kBlock);
    const PlaneSource& source = f.Source();
    if (!(motion.Of() == sound) || &source != heard)
        return false;
    std::array<RunningVoice*, kVoiceSlots> sounding;
    std::size_t voiceCount = 0;
    for (std::size_t i = 0; i < kVoiceSlots; i++) {
        RunningVoice& v = running[i];
        if (!GoesOn(v, voices[i]) || (v.sounds && !motion.GoesOn(v, cells)))
            return false;
    }
    mix.GoOn(kBlock);
    float resting = 0;
    for (RunningVoice& v : running) {
        if (!v.sounds)
            continue;
        if (!v.rests) {
            sounding[voiceCount++] = &v;
            continue;
        }
        resting += v.filter.out * mix.Volume(v) * v.gains[0].Now();
        for (std::size_t i = 0; i < cells; i++)
            motion.Pass(v);
        v.age += cells * kBlock;
    }
    mix.Sort({sounding.data(), voiceCount});
    const std::span<RunningVoice* const> all(sounding.data(), voiceCount);
    const std::size_t points = voiceCount * kBlock;
    alignas(64) std::array<float, kMostCells * kVoiceSlots * kBlock> x, y;
    alignas(64) std::array<float, kMostCells * kVoiceSlots * kBlock + kSlack> s;
    alignas(64) std::array<float, kMostCells * kBlock + kSlack> sum;
    motion.MoveCells(all, cells, x.data(), y.data());
    // Those of one cell after the other only where they have inputs of their own.
    const std::size_t some = source.Inputs().empty() ? cells : 1;
    for (std::size_t i = 0; i < cells; i += some) {
        inputs.Advance(sampleRate, Smooth(), 0, some * kBlock);
        if (voiceCount == 0)
            continue;
        const float* const* heard =
            inputs.Fill(source, all, controllers, own, 1.0 / sampleRate, some * kBlock);
        source.Evaluate(&x[i * points], &y[i * points], heard, &s[i * points], some * points);
    }
    std::fill_n(sum.data(), cells * kBlock, resting);
    const OutputMix::Ear ear{&RunningVoice::filter, s.data(), sum.data(), 0};
    if (mix.Add(all, {&ear, 1}, cells))
        bounded = true;
    const float factor = gain * mix.Level();
    for (std::size_t i = 0; i < cells * kBlock; i++)
        left[i] = sum[i] * factor;
    if (right)
        std::copy_n(left, cells * kBlock, right);
    return true;
}

} // namespace vexa
