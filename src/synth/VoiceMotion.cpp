// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/VoiceMotion.h"

#include "kits/support/RealtimeMark.h"
#include "synth/Envelope.h"
#include "synth/EqualSteps.h"

#include <algorithm>

namespace vexa {

/// The work space of one coordinate of one voice.
struct VoiceMotion::Space {
    alignas(64) std::array<double, kRoom> waves;
    alignas(64) std::array<double, kCellRoom> centres;
    alignas(64) std::array<float, kCellRoom> radiusEnvelope;
};

/// The phases of several voices at the beginning of each cell, and their waves.
struct VoiceMotion::Turning {
    static constexpr std::size_t kMost = 2 * kTogether * kMostCells;
    std::array<double, kMost> phases, sines, cosines;
    std::size_t number = 0;
    /// The indices at which the phases of x and of y begin. They are equal if both coordinates have
    /// the same phases, as on every circular orbit.
    struct Place {
        std::size_t x, y;
    };
    std::array<Place, kTogether> places;
};

namespace {

constexpr double kTwoPi = 6.28318530718;

/// The two ears' waves of an oscillator at the beginning of each cell.
struct VEXA_REALTIME CellEars {
    std::array<double, kMostCells> leftSines, leftCosines, rightSines, rightCosines;

    void Turn(const EarTurn& ears, const double* sines, const double* cosines,
              std::size_t cells) noexcept {
        for (std::size_t i = 0; i < cells; i++) {
            const EarTurn::Heard heard = ears.Of(sines[i], cosines[i]);
            leftSines[i] = heard.leftSine;
            leftCosines[i] = heard.leftCosine;
            rightSines[i] = heard.rightSine;
            rightCosines[i] = heard.rightCosine;
        }
    }
};

} // namespace

/// The times of one voice over the block; computed only if an envelope needs them.
class VEXA_REALTIME VoiceMotion::Times {
  public:
    /// Prepares a block that begins `offset` samples after the beginning of its cell.
    VEXA_REALTIME Times(RunningVoice& v, double dt, std::size_t offset, std::size_t count)
        : v(v), dt(dt), offset(offset), count(count), begin(v.t) {
        const double step = RoundedStep(begin, dt);
        const double end = begin + static_cast<double>(count) * step;
        if (AddsTheSame(begin, dt, step, end))
            v.t = end;
        else
            Fill();
        first = static_cast<float>(begin);
        last = static_cast<float>(v.t);
    }

    /// Returns null if the envelope is constant, with its value in `value`; otherwise the
    /// envelope's values, which are in `space`.
    const float* Follow(const Axis::NumberedCurve& envelope, RampParts& ramps, float* space,
                        float& value) {
        const auto& [curve, number] = envelope;
        EnvelopeTrack& track = v.envelopes[number];
        const float level = v.rellevel[number];
        const bool holds = track.Holds(curve, first, last, v.released, level);
        if (holds) {
            value = track.Value();
        } else {
            if (!filled)
                Fill();
            track.Values(curve, t.data(), v.released, level, space, count);
        }
        if (v.fresh)
            track.Forget();
        const bool lags = track.Follow(curve, holds ? value : space[0], v.smooth, offset);
        if (lags) {
            if (holds)
                std::fill_n(space, count, value);
            track.AddLag(ramps, space, count);
        }
        const bool varies = lags || !holds;
        track.Heard(varies ? space[count - 1] : value);
        return varies ? space : nullptr;
    }

  private:
    void Fill() {
        v.t = Loops().Moments(begin, dt, t.data(), count);
        filled = true;
    }

    RunningVoice& v;
    double dt;
    std::size_t offset, count;
    double begin;
    /// The bounds of the times.
    float first, last;
    bool filled = false;
    alignas(64) std::array<double, kCellRoom> t;
};

/// The centres that drift at varying speeds.
class VEXA_REALTIME VoiceMotion::Drifts {
  public:
    void Add(const Drift& drift) { drifts[number++] = drift; }
    void Run(std::size_t count) const { Loops().Drifts(drifts.data(), number, count); }

  private:
    std::array<Drift, 2 * kTogether> drifts;
    std::size_t number = 0;
};

/// The work space for moving several voices; its arrays alternate x and y, voice after voice.
struct VoiceMotion::Moving {
    VEXA_REALTIME explicit Moving(std::size_t count) : ramps(count) {}

    static constexpr std::size_t kMost = 2 * kTogether;
    RampParts ramps;
    Drifts drifts;
    std::array<Space, kMost> spaces;
    std::array<Coordinate, kMost> coordinates{};
    std::array<double, kMost> phases, sines, cosines;
    std::array<std::array<double, kMostSamples>, kTogether> pitches;
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

/// Returns the present value of the sum of that index (RunningVoice::sums), which moves to
/// `target`.
double VoiceMotion::Sum(RunningVoice& v, std::size_t number, double target) const noexcept {
    Ramp<double>& sum = v.sums[number];
    if (v.fresh)
        sum.Set(target);
    sum.Aim(target, v.smooth, offset);
    return sum.Now();
}

void VoiceMotion::PutRadius(const Axis& axis, RunningVoice& v, Times& times, Moving& m,
                            std::size_t place) const noexcept {
    Coordinate& c = m.coordinates[place];
    const Weights weights = Of(axis.radius, v);
    const std::size_t number = 4 + axis.number;
    c.radius = Sum(v, number, weights.c0 + weights.rest);
    float value = 0;
    float* const values = m.spaces[place].radiusEnvelope.data();
    c.envelope = times.Follow(axis.radiusEnvelope, m.ramps, values, value);
    Ramp<double>& sum = v.sums[number];
    if (sum.Varies()) {
        if (!c.envelope)
            std::fill_n(values, count, value);
        std::array<double, kCellRoom> factors;
        sum.Write(m.ramps, factors.data(), count);
        Loops().Scale(values, factors.data(), count);
        c.envelope = values;
        c.radius = 1;
    } else if (!c.envelope) {
        c.radius *= value;
    }
}

void VoiceMotion::PutCentre(const Axis& axis, RunningVoice& v, double& centre, Times& times,
                            Moving& m, std::size_t place) const noexcept {
    Coordinate& c = m.coordinates[place];
    const Weights target = Of(axis.drift, v);
    const Weights weights{Sum(v, axis.number, target.c0), Sum(v, 2 + axis.number, target.rest)};
    Ramp<double>& weight = v.sums[axis.number];
    Ramp<double>& rest = v.sums[2 + axis.number];
    const bool varies = weight.Varies() || rest.Varies();
    float value = 0;
    alignas(64) std::array<float, kCellRoom> envelope;
    const bool follows = weights.c0 != 0 || varies;
    if (!follows)
        v.envelopes[axis.driftEnvelope.number].Forget();
    const float* const values =
        follows ? times.Follow(axis.driftEnvelope, m.ramps, envelope.data(), value) : nullptr;
    double* const centres = m.spaces[place].centres.data();
    c.centres = centres;
    if (varies || values) {
        if (!values)
            std::fill_n(envelope.data(), count, value);
        Speed speed{envelope.data(), weights.c0, weights.rest, dt, nullptr, nullptr};
        alignas(64) std::array<double, kCellRoom> allWeights, rests;
        if (varies) {
            weight.Write(m.ramps, allWeights.data(), count);
            rest.Write(m.ramps, rests.data(), count);
            speed.weights = allWeights.data();
            speed.rests = rests.data();
        }
        Loops().Steps(speed, centres, count);
        m.drifts.Add({&centre, centres});
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

/// Returns the factor on the frequency at each sample, in `space`, if it varies; else null.
const double* VoiceMotion::Factors(RunningVoice& v, double* space) const noexcept {
    if (!v.glide.Varies() && !v.bend.Varies())
        return nullptr;
    std::fill_n(space, count, 1.0);
    v.glide.Scale(space, count);
    v.bend.Scale(space, count);
    return space;
}

/// Returns the phase step in radians per sample; if there are factors on the frequency, the step
/// that they multiply.
double VoiceMotion::Turn(const Axis& axis, const RunningVoice& v,
                         const double* factors) const noexcept {
    const double turn = axis.turn * v.freq * dt;
    return factors ? turn : turn * (v.glide.Factor() * v.bend.Factor());
}

/// Computes the centres and radii of the voices.
void VoiceMotion::PutOrbits(std::span<RunningVoice* const> voices, Moving& m) const noexcept {
    for (std::size_t k = 0; k < voices.size(); k++) {
        RunningVoice& v = *voices[k];
        Times times(v, dt, offset, count);
        PutCentre(x, v, v.cx, times, m, 2 * k);
        PutCentre(y, v, v.cy, times, m, 2 * k + 1);
        PutRadius(x, v, times, m, 2 * k);
        PutRadius(y, v, times, m, 2 * k + 1);
        v.fresh = false;
    }
    m.drifts.Run(count);
}

/// Computes everything but the places: centres and radii, and the phases and waves at the beginning
/// of the block.
void VoiceMotion::Begin(std::span<RunningVoice* const> voices, Moving& m) const noexcept {
    PutOrbits(voices, m);
    for (std::size_t k = 0; k < voices.size(); k++) {
        RunningVoice& v = *voices[k];
        const double* const factors = Factors(v, m.pitches[k].data());
        m.phases[2 * k] = v.x.Begin(Turn(x, v, factors), offset, factors);
        m.phases[2 * k + 1] = v.y.Begin(Turn(y, v, factors), offset, factors);
    }
    Loops().Waves(m.phases.data(), m.sines.data(), m.cosines.data(), 2 * voices.size());
}

void VoiceMotion::Move(std::span<RunningVoice* const> voices, Places places) const noexcept {
    Moving m(count);
    Begin(voices, m);
    for (std::size_t i = 0; i < 2 * voices.size(); i++) {
        RunningVoice& v = *voices[i / 2];
        const bool isX = i % 2 == 0;
        m.coordinates[i].place = (isX ? places.x : places.y) + i / 2 * count;
        (isX ? v.x : v.y)
            .Advance(isX ? Oscillator::Wave::cosine : Oscillator::Wave::sine, m.sines[i],
                     m.cosines[i], count, m.spaces[i].waves.data(), m.coordinates[i]);
    }
    Loops().Places(m.coordinates.data(), 2 * voices.size(), count);
}

void VoiceMotion::Move(std::span<RunningVoice* const> voices, const Ears& ears, Places left,
                       Places right) const noexcept {
    Moving m(count);
    Begin(voices, m);
    alignas(64) std::array<std::array<double, kRoom>, Moving::kMost> waves;
    std::array<Coordinate, Moving::kMost> rights = m.coordinates;
    for (std::size_t i = 0; i < 2 * voices.size(); i++) {
        RunningVoice& v = *voices[i / 2];
        const bool isX = i % 2 == 0;
        m.coordinates[i].place = (isX ? left.x : left.y) + i / 2 * count;
        rights[i].place = (isX ? right.x : right.y) + i / 2 * count;
        (isX ? v.x : v.y)
            .Advance(isX ? Oscillator::Wave::cosine : Oscillator::Wave::sine,
                     isX ? ears.X() : ears.Y(), m.sines[i], m.cosines[i], count,
                     m.spaces[i].waves.data(), waves[i].data(), m.coordinates[i], rights[i]);
    }
    Loops().Places(m.coordinates.data(), 2 * voices.size(), count);
    Loops().Places(rights.data(), 2 * voices.size(), count);
}

/// Returns true if the voice's phases grow by the same steps in all cells; it then begins the
/// cells, at the index `voice`.
bool VoiceMotion::TurnsEvenly(RunningVoice& v, Turning& turning, std::size_t voice) const noexcept {
    const std::size_t cells = count / kMostSamples;
    double* const ofx = &turning.phases[turning.number];
    double* const ofy = ofx + cells;
    if (!v.x.BeginCells(Turn(x, v, nullptr), cells, ofx) ||
        !v.y.BeginCells(Turn(y, v, nullptr), cells, ofy))
        return false;
    const bool joint = std::equal(ofx, ofy, ofy);
    turning.places[voice] = {turning.number, turning.number + (joint ? 0 : cells)};
    turning.number += joint ? cells : 2 * cells;
    return true;
}

void VoiceMotion::MoveTogether(std::span<RunningVoice* const> voices, Turning& turning,
                               std::size_t stride, const Ears* ears, Places left,
                               Places right) const noexcept {
    const std::size_t cells = count / kMostSamples;
    const BlockLoops& loops = Loops();
    loops.Waves(turning.phases.data(), turning.sines.data(), turning.cosines.data(),
                turning.number);
    Moving m(count);
    PutOrbits(voices, m);
    for (std::size_t k = 0; k < voices.size(); k++) {
        Coordinate& ofx = m.coordinates[2 * k];
        Coordinate& ofy = m.coordinates[2 * k + 1];
        ofx.steps = voices[k]->x.PassCells(cells);
        ofy.steps = voices[k]->y.PassCells(cells);
        const auto [atx, aty] = turning.places[k];
        const double *const sinesx = &turning.sines[atx], *const cosinesx = &turning.cosines[atx];
        const double *const sinesy = &turning.sines[aty], *const cosinesy = &turning.cosines[aty];
        const auto write = [&](CellWaves wavesx, CellWaves wavesy, Places places) {
            ofx.place = places.x + k * kMostSamples;
            ofy.place = places.y + k * kMostSamples;
            loops.Cells(ofx, wavesx, cells, stride);
            loops.Cells(ofy, wavesy, cells, stride);
        };
        if (!ears) {
            write({cosinesx, sinesx, -1}, {sinesy, cosinesy, 1}, left);
            continue;
        }
        CellEars apartx, aparty;
        apartx.Turn(ears->X(), sinesx, cosinesx, cells);
        aparty.Turn(ears->Y(), sinesy, cosinesy, cells);
        write({apartx.leftCosines.data(), apartx.leftSines.data(), -1},
              {aparty.leftSines.data(), aparty.leftCosines.data(), 1}, left);
        write({apartx.rightCosines.data(), apartx.rightSines.data(), -1},
              {aparty.rightSines.data(), aparty.rightCosines.data(), 1}, right);
    }
}

void VoiceMotion::MoveAlone(RunningVoice& v, std::size_t stride, const Ears* ears, Places left,
                            Places right) const noexcept {
    VoiceMotion cell = *this;
    cell.count = kMostSamples;
    RunningVoice* const voice = &v;
    for (std::size_t at = 0; at < count / kMostSamples * stride; at += stride) {
        const Places here{left.x + at, left.y + at};
        if (ears)
            cell.Move({&voice, 1}, *ears, here, {right.x + at, right.y + at});
        else
            cell.Move({&voice, 1}, here);
    }
}

void VoiceMotion::MoveCells(std::span<RunningVoice* const> voices, const Ears* ears, Places left,
                            Places right) const noexcept {
    const std::size_t stride = voices.size() * kMostSamples;
    for (std::size_t k = 0; k < voices.size();) {
        Turning turning;
        std::size_t even = 0;
        while (even < kTogether && k + even < voices.size() &&
               TurnsEvenly(*voices[k + even], turning, even))
            even++;
        const auto from = [at = k * kMostSamples](Places places) {
            return Places{places.x + at, places.y + at};
        };
        if (even > 0)
            MoveTogether(voices.subspan(k, even), turning, stride, ears, from(left),
                         ears ? from(right) : right);
        else
            MoveAlone(*voices[k], stride, ears, from(left), ears ? from(right) : right);
        k += std::max<std::size_t>(even, 1);
    }
}

bool VoiceMotion::Stands(const Axis& axis, RunningVoice& v) const noexcept {
    const auto t = static_cast<float>(v.t);
    // True if the sum stays 0, because its envelope has ended or it follows none.
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
    return v.released && std::ranges::none_of(v.sums, &Ramp<double>::Moves) &&
           std::ranges::none_of(v.envelopes, &EnvelopeTrack::Lags) && Stands(x, v) && Stands(y, v);
}

void VoiceMotion::Pass(RunningVoice& v) const noexcept {
    const Times passed(v, dt, offset, count);
    std::array<double, kMostSamples> space;
    const double* const factors = Factors(v, space.data());
    v.x.Pass(Turn(x, v, factors), offset, count, factors);
    v.y.Pass(Turn(y, v, factors), offset, count, factors);
}

} // namespace vexa
