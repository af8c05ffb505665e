// SPDX-License-Identifier: GPL-3.0-or-later
// Renders several cells at once while no note begins or ends, so that each decision per voice and
// block is made once for all of them. Every sample is the same as when rendered in blocks.
#include "synth/VoiceRenderer.h"

#include <algorithm>

namespace vexa {

std::size_t VoiceMotion::CellsFor(const Axis& axis, const RunningVoice& v,
                                  std::size_t most) const noexcept {
    const Weights drift = Of(axis.drift, v);
    const Weights radius = Of(axis.radius, v);
    const std::array<double, 3> wanted{drift.c0, drift.rest, radius.c0 + radius.rest};
    for (std::size_t i = 0; i < wanted.size(); i++) {
        const Ramp<double>& sum = v.sums[2 * i + axis.number];
        if (sum.End() != wanted[i])
            return 0;
        most = sum.CellsAlike(most);
    }
    for (const Axis::NumberedCurve* envelope : {&axis.driftEnvelope, &axis.radiusEnvelope})
        most = v.envelopes[envelope->number].CellsAlike(most);
    return most;
}

std::size_t VoiceMotion::CellsFor(RunningVoice& v, std::size_t most) const noexcept {
    const std::size_t cells = CellsFor(y, v, CellsFor(x, v, most));
    // A point that stands does so for good, so it is enough to check the end of the cells, or a
    // little beyond it, with the sums at their targets. The envelopes are restored afterwards.
    if (!v.released || v.stands || cells == 0)
        return cells;
    const auto envelopes = v.envelopes;
    const double t = v.t;
    v.t += dt * static_cast<double>((cells + 1) * kMostSamples);
    const bool stands = Stands(x, v) && Stands(y, v);
    v.t = t;
    v.envelopes = envelopes;
    return stands ? 0 : cells;
}

/// Returns true if the voice's slot has no change for it.
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

/// Renders up to `most` whole cells at once and returns their number; 0 if anything changes in
/// them.
std::size_t VoiceRenderer::RenderCells(const PlaneFunction& f, float* left, float* right,
                                       std::size_t most) noexcept {
    if (!mix.Stays() || !ears.StayAt(parameters, right ? playing.Spread() : 0) ||
        apart != (ears.Apart() || (right && Panned())))
        return 0;
    const OwnControllers own(playing, macros);
    const double dt = 1.0 / sampleRate;
    const VoiceMotion first(parameters, controllers, own, dt, 0, kBlock);
    const PlaneSource& source = f.Source();
    if (!(first.Of() == sound) || &source != heard)
        return 0;
    const bool hearsTime = HearsTime(source);
    std::size_t cells = most;
    for (std::size_t i = 0; i < kVoiceSlots && cells > 1; i++) {
        RunningVoice& v = running[i];
        if (!GoesOn(v, voices[i]))
            return 0;
        if (!v.sounds)
            continue;
        // If a point stands, each cell decides whether the voice rests.
        if (v.rests ? inputs.IsAskedOf(source, v, controllers, own)
                    : v.stands && !Lingers(v, hearsTime, cells))
            return 0;
        cells = first.CellsFor(v, cells);
    }
    if (cells <= 1)
        return 0;
    const VoiceMotion motion(parameters, controllers, own, dt, 0, cells * kBlock);
    if (IsReplaced())
        return 0;
    mix.GoOn(kBlock);
    std::array<RunningVoice*, kVoiceSlots> sounding;
    std::size_t voiceCount = 0;
    float resting = 0, restingRight = 0;
    for (RunningVoice& v : running) {
        if (!v.sounds)
            continue;
        if (!v.rests) {
            sounding[voiceCount++] = &v;
            continue;
        }
        resting += v.filter.out * mix.Volume(v) * v.gains[0].Now();
        restingRight += v.rightFilter.out * mix.Volume(v) * v.gains[1].Now();
        for (std::size_t i = 0; i < cells; i++)
            first.Pass(v);
        v.age += v.stopped ? 0 : cells * kBlock;
    }
    mix.Sort({sounding.data(), voiceCount});
    const std::span<RunningVoice* const> all(sounding.data(), voiceCount);
    const std::size_t points = voiceCount * kBlock;
    auto& [one, other] = *cellEars;
    motion.MoveCells(all, apart ? &ears : nullptr, {one.x.data(), one.y.data()},
                     {other.x.data(), other.y.data()});
    // Functions with inputs are evaluated cell by cell.
    const std::size_t some = source.Inputs().empty() ? cells : 1;
    const float* const* given = nullptr;
    bool stays = false;
    for (std::size_t i = 0; i < cells; i += some) {
        if (stays) {
            inputs.GoOn(all, some * kBlock);
        } else {
            inputs.Advance(sampleRate, Smooth(), 0, some * kBlock);
            inputs.ShowMacros();
            if (voiceCount == 0)
                continue;
            given = inputs.Fill(source, all, controllers, own, dt, some * kBlock);
            stays = inputs.Stays(source, all);
        }
        const auto evaluate = [&](CellEar& ear) {
            source.Evaluate(&ear.x[i * points], &ear.y[i * points], given, &ear.s[i * points],
                            some * points);
        };
        evaluate(one);
        if (apart)
            evaluate(other);
    }
    for (std::size_t k = 0; k < voiceCount; k++) {
        for (std::size_t i = 0; i < cells; i++) {
            const std::size_t at = i * points + k * kBlock;
            Watch(*all[k], &one.s[at], &other.s[at], kBlock, hearsTime, true);
        }
    }
    std::fill_n(one.sum.data(), cells * kBlock, resting);
    if (apart)
        std::fill_n(other.sum.data(), cells * kBlock, restingRight);
    const std::array<OutputMix::Ear, 2> both{
        {{&RunningVoice::filter, one.s.data(), one.sum.data(), 0},
         {&RunningVoice::rightFilter, other.s.data(), other.sum.data(), 1}}};
    if (mix.Add(all, {both.data(), apart ? both.size() : 1}, cells))
        bounded = true;
    for (std::size_t k = 0; k < voiceCount; k++) {
        RunningVoice& v = *all[k];
        const std::size_t last = (cells - 1) * points + (k + 1) * kBlock - 1;
        v.over = v.stands && IsOver(v, one.s[last], other.s[last]);
    }
    mix.Write(one.sum.data(), gain, left, cells * kBlock);
    if (right)
        mix.Write(apart ? other.sum.data() : one.sum.data(), gain, right, cells * kBlock);
    return cells;
}

} // namespace vexa
