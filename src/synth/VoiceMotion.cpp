// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/VoiceMotion.h"

#include "kits/support/RealtimeMark.h"
#include "synth/Envelope.h"
#include "synth/EqualSteps.h"

#include <algorithm>

namespace vexa {

namespace {

constexpr double kTwoPi = 6.28318530718;

} // namespace

/// Work space of one coordinate of one voice.
struct VoiceMotion::Space {
    alignas(64) std::array<double, kRoom> waves, centres, weights, rests;
    alignas(64) std::array<float, kRoom> driftEnvelope, radiusEnvelope;
};

/// The times of one voice over the block; written only where an envelope asks for them.
class VEXA_REALTIME VoiceMotion::Times {
  public:
    VEXA_REALTIME Times(RunningVoice& v, double dt, std::size_t count)
        : v(v), dt(dt), count(count), begin(v.t) {
        const double step = RoundedStep(begin, dt);
        const double end = begin + static_cast<double>(count) * step;
        if (AddsTheSame(begin, dt, step, end))
            v.t = end;
        else
            Tell();
        first = static_cast<float>(begin);
        last = static_cast<float>(v.t);
    }

    /// Null where the envelope keeps its value, which is written to `value`; otherwise its values,
    /// which are in `space`.
    const float* Follow(const Axis::NumberedCurve& envelope, float* space, float& value) {
        const auto& [curve, number] = envelope;
        EnvelopeTrack& track = v.envelopes[number];
        const float level = v.rellevel[number];
        if (track.Holds(curve, first, last, v.released, level)) {
            value = track.Value();
            return nullptr;
        }
        if (!told)
            Tell();
        track.Values(curve, t.data(), v.released, level, space, count);
        return space;
    }

  private:
    void Tell() {
        v.t = Loops().Accumulate(begin, dt, seconds.data(), count);
        Loops().Narrow(seconds.data(), t.data(), count);
        told = true;
    }

    RunningVoice& v;
    double dt;
    std::size_t count;
    double begin;
    /// The times are between these.
    float first, last;
    bool told = false;
    alignas(64) std::array<double, kRoom> seconds;
    alignas(64) std::array<float, kRoom> t;
};

/// The centres that drift at changing speeds.
class VEXA_REALTIME VoiceMotion::Drifts {
  public:
    void Add(const Drift& drift) { drifts[number++] = drift; }
    void Run(std::size_t count) const { Loops().Drifts(drifts.data(), number, count); }

  private:
    std::array<Drift, 2 * kTogether> drifts;
    std::size_t number = 0;
};

VoiceMotion::VoiceMotion(const sound_param& p, const ControllerTable& controllers,
                         const OwnControllers& own, double dt, std::size_t offset,
                         std::size_t count) noexcept
    : own(own),
      dt(dt),
      offset(offset),
      count(count),
      x{kDcxdt.Now(p, controllers),
        kAx.Now(p, controllers),
        {p.EnvCx->Curve(), 0},
        {p.EnvAx->Curve(), 2},
        0,
        kTwoPi * p.Fx},
      y{kDcydt.Now(p, controllers),
        kAy.Now(p, controllers),
        {p.EnvCy->Curve(), 1},
        {p.EnvAy->Curve(), 3},
        1,
        kTwoPi * p.Fy} {}

/// The sum of that number (RunningVoice::sums) on its way to what it is to be.
double VoiceMotion::Sum(RunningVoice& v, std::size_t number, double target) const noexcept {
    Ramp<double>& sum = v.sums[number];
    if (v.fresh)
        sum.Set(target);
    sum.Aim(target, v.smooth, offset);
    return sum.Now();
}

void VoiceMotion::PutRadius(const Axis& axis, RunningVoice& v, Times& times, Space& space,
                            Coordinate& c) const noexcept {
    const Weights weights = Of(axis.radius, v);
    const std::size_t number = 4 + axis.number;
    c.radius = Sum(v, number, weights.c0 + weights.rest);
    float value = 0;
    float* const values = space.radiusEnvelope.data();
    c.envelope = times.Follow(axis.radiusEnvelope, values, value);
    Ramp<double>& sum = v.sums[number];
    if (sum.Varies()) {
        std::array<double, kRoom> factors;
        sum.Write(factors.data(), count);
        for (std::size_t i = 0; i < count; i++)
            values[i] = static_cast<float>((c.envelope ? values[i] : value) * factors[i]);
        c.envelope = values;
        c.radius = 1;
    } else if (!c.envelope) {
        c.radius *= value;
    }
}

void VoiceMotion::PutCentre(const Axis& axis, RunningVoice& v, double& centre, Times& times,
                            Drifts& drifts, Space& space, Coordinate& c) const noexcept {
    const Weights target = Of(axis.drift, v);
    const Weights weights{Sum(v, axis.number, target.c0), Sum(v, 2 + axis.number, target.rest)};
    Ramp<double>& weight = v.sums[axis.number];
    Ramp<double>& rest = v.sums[2 + axis.number];
    const bool varies = weight.Varies() || rest.Varies();
    float value = 0;
    const float* const values =
        weights.c0 == 0 && !varies
            ? nullptr
            : times.Follow(axis.driftEnvelope, space.driftEnvelope.data(), value);
    double* const centres = space.centres.data();
    c.centres = centres;
    if (varies || values) {
        if (!values)
            std::fill_n(space.driftEnvelope.data(), kRoom, value);
        Drift drift{space.driftEnvelope.data(),
                    weights.c0,
                    weights.rest,
                    dt,
                    nullptr,
                    nullptr,
                    &centre,
                    centres};
        if (varies) {
            weight.Write(space.weights.data(), count);
            rest.Write(space.rests.data(), count);
            drift.weights = space.weights.data();
            drift.rests = space.rests.data();
        }
        drifts.Add(drift);
        return;
    }
    const double step = dt * (value * weights.c0 + weights.rest);
    c.centre = centre;
    c.drift = RoundedStep(centre, step);
    const double end = centre + static_cast<double>(count) * c.drift;
    if (AddsTheSame(centre, step, c.drift, end)) {
        c.centres = nullptr;
        centre = end;
    } else {
        centre = Loops().Accumulate(centre, step, centres, count);
    }
}

/// What the frequency is multiplied by at each moment, in `space`, where that changes; else null.
const double* VoiceMotion::Factors(RunningVoice& v, double* space) const noexcept {
    if (!v.glide.Varies() && !v.bend.Varies())
        return nullptr;
    std::fill_n(space, count, 1.0);
    v.glide.Scale(space, count);
    v.bend.Scale(space, count);
    return space;
}

/// Radians per sample, or what the factors multiply.
double VoiceMotion::Turn(const Axis& axis, const RunningVoice& v,
                         const double* factors) const noexcept {
    const double turn = axis.turn * v.freq * dt;
    return factors ? turn : turn * (v.glide.Factor() * v.bend.Factor());
}

/// What moves several voices; x and y by turns.
struct VoiceMotion::Moving {
    static constexpr std::size_t kMost = 2 * kTogether;
    std::array<Space, kMost> spaces;
    std::array<Coordinate, kMost> coordinates{};
    std::array<double, kMost> phases, sines, cosines;
    std::array<std::array<double, kMostSamples>, kTogether> pitches;
};

/// All but the waves and the places.
void VoiceMotion::Begin(std::span<RunningVoice* const> voices, Moving& m) const noexcept {
    Drifts drifts;
    for (std::size_t k = 0; k < voices.size(); k++) {
        RunningVoice& v = *voices[k];
        Times times(v, dt, count);
        PutCentre(x, v, v.cx, times, drifts, m.spaces[2 * k], m.coordinates[2 * k]);
        PutCentre(y, v, v.cy, times, drifts, m.spaces[2 * k + 1], m.coordinates[2 * k + 1]);
        PutRadius(x, v, times, m.spaces[2 * k], m.coordinates[2 * k]);
        PutRadius(y, v, times, m.spaces[2 * k + 1], m.coordinates[2 * k + 1]);
        v.fresh = false;
        const double* const factors = Factors(v, m.pitches[k].data());
        m.phases[2 * k] = v.x.Begin(Turn(x, v, factors), offset, factors);
        m.phases[2 * k + 1] = v.y.Begin(Turn(y, v, factors), offset, factors);
    }
    drifts.Run(count);
    Loops().Waves(m.phases.data(), m.sines.data(), m.cosines.data(), 2 * voices.size());
}

void VoiceMotion::Move(std::span<RunningVoice* const> voices, float* placesx,
                       float* placesy) const noexcept {
    Moving m;
    Begin(voices, m);
    for (std::size_t i = 0; i < 2 * voices.size(); i++) {
        RunningVoice& v = *voices[i / 2];
        const bool isX = i % 2 == 0;
        m.coordinates[i].place = (isX ? placesx : placesy) + i / 2 * count;
        (isX ? v.x : v.y)
            .Advance(isX ? Oscillator::Wave::cosine : Oscillator::Wave::sine, m.sines[i],
                     m.cosines[i], count, m.spaces[i].waves.data(), m.coordinates[i]);
    }
    Loops().Places(m.coordinates.data(), 2 * voices.size(), count);
}

void VoiceMotion::Move(std::span<RunningVoice* const> voices, const Ears& ears, float* leftx,
                       float* lefty, float* rightx, float* righty) const noexcept {
    Moving m;
    Begin(voices, m);
    alignas(64) std::array<std::array<double, kRoom>, Moving::kMost> waves;
    std::array<Coordinate, Moving::kMost> rights = m.coordinates;
    for (std::size_t i = 0; i < 2 * voices.size(); i++) {
        RunningVoice& v = *voices[i / 2];
        const bool isX = i % 2 == 0;
        m.coordinates[i].place = (isX ? leftx : lefty) + i / 2 * count;
        rights[i].place = (isX ? rightx : righty) + i / 2 * count;
        (isX ? v.x : v.y)
            .Advance(isX ? Oscillator::Wave::cosine : Oscillator::Wave::sine,
                     isX ? ears.X() : ears.Y(), m.sines[i], m.cosines[i], count,
                     m.spaces[i].waves.data(), waves[i].data(), m.coordinates[i], rights[i]);
    }
    Loops().Places(m.coordinates.data(), 2 * voices.size(), count);
    Loops().Places(rights.data(), 2 * voices.size(), count);
}

bool VoiceMotion::Stands(const Axis& axis, RunningVoice& v) const noexcept {
    const auto t = static_cast<float>(v.t);
    // Whether the sum is 0 for good where its envelope has come to its end, and where it has none
    // to follow.
    const auto zero = [&](const Axis::NumberedCurve& envelope, double weight, double rest) {
        EnvelopeTrack& track = v.envelopes[envelope.number];
        if (weight == 0)
            return rest == 0;
        return track.HoldsForGood(envelope.curve, t, v.released, v.rellevel[envelope.number]) &&
               track.Value() * weight + rest == 0;
    };
    const Weights drift = Of(axis.drift, v);
    const Weights radius = Of(axis.radius, v);
    return zero(axis.radiusEnvelope, radius.c0 + radius.rest, 0) &&
           zero(axis.driftEnvelope, drift.c0, drift.rest);
}

bool VoiceMotion::Stands(RunningVoice& v) const noexcept {
    const auto moves = [](const Ramp<double>& sum) { return sum.Moves(); };
    return v.released && std::none_of(v.sums.begin(), v.sums.end(), moves) && Stands(x, v) &&
           Stands(y, v);
}

void VoiceMotion::Pass(RunningVoice& v) const noexcept {
    const Times passed(v, dt, count);
    std::array<double, kMostSamples> space;
    const double* const factors = Factors(v, space.data());
    v.x.Pass(Turn(x, v, factors), offset, count, factors);
    v.y.Pass(Turn(y, v, factors), offset, count, factors);
}

} // namespace vexa
