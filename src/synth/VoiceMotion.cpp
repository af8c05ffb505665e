#include "synth/VoiceMotion.h"

#include "synth/Coefficients.h"
#include "synth/Envelope.h"
#include "synth/EqualSteps.h"

namespace vexa {

namespace {

constexpr double kTwoPi = 6.28318530718;

template<class T>
using Line = std::array<T, kRoom>;

/// The work space of one voice.
struct VoiceSpace {
    alignas(64) Line<double> seconds;
    alignas(64) Line<float> t;
    alignas(64) std::array<Line<float>, 4> envelopes;
    alignas(64) std::array<Line<double>, 2> centres;
    /// The two coordinates; their waves come last.
    std::array<Coordinate, 2> coordinates;
};

/// The envelopes of one voice over a block.
class Envelopes {
  public:
    Envelopes(RunningVoice& v, const MotionBlock& block, VoiceSpace& space)
        : v(v), block(block), space(space), begin(v.t) {
        const double dt = block.dt;
        const double step = RoundedStep(v.t, dt);
        const double end = v.t + static_cast<double>(block.count) * step;
        first = static_cast<float>(v.t);
        last = static_cast<float>(end + dt);
        if (AddsTheSame(v.t, dt, step, end))
            v.t = end;
        else
            TellTimes();
    }

    /// Null where envelope `number` keeps its value, which is written to `value`; otherwise its
    /// values.
    const float* Follow(const Envelope* envelope, std::size_t number, float& value) {
        const EnvelopeCurve& curve = envelope->Curve();
        EnvelopeTrack& track = v.envelopes[number];
        const float level = v.rellevel[number];
        if (track.Holds(curve, first, last, v.released, level)) {
            value = track.Value();
            return nullptr;
        }
        if (!timesTold)
            TellTimes();
        float* const values = space.envelopes[number].data();
        track.Values(curve, space.t.data(), v.released, level, values, block.count);
        return values;
    }

  private:
    void TellTimes() {
        v.t = Loops().Accumulate(begin, block.dt, space.seconds.data(), block.count);
        Loops().Narrow(space.seconds.data(), space.t.data(), block.count);
        timesTold = true;
    }

    RunningVoice& v;
    const MotionBlock& block;
    VoiceSpace& space;
    double begin;
    /// The times are between these.
    float first, last;
    bool timesTold = false;
};

/// Radii and centres of one voice. A centre that drifts at a changing speed is added to `drifts`.
class Course {
  public:
    Course(RunningVoice& v, const MotionBlock& block, VoiceSpace& space)
        : v(v), block(block), space(space), envelopes(v, block, space) {}

    void Radius(std::size_t coordinate, const Envelope* envelope, std::size_t number,
                const CoefficientGroup& group) {
        Coordinate& c = space.coordinates[coordinate];
        const Weights weights = WeightsOf(group);
        c.radius = weights.c0 + weights.rest;
        float value = 0;
        c.envelope = envelopes.Follow(envelope, number, value);
        if (!c.envelope)
            c.radius *= value;
    }

    void Centre(std::size_t coordinate, const Envelope* envelope, std::size_t number,
                const CoefficientGroup& group, double& centre, auto& drifts) {
        Coordinate& c = space.coordinates[coordinate];
        const Weights weights = WeightsOf(group);
        float value = 0;
        const float* const values =
            weights.c0 == 0 ? nullptr : envelopes.Follow(envelope, number, value);
        double* const centres = space.centres[coordinate].data();
        c.centres = centres;
        if (values) {
            drifts.Add({values, weights.c0, weights.rest, block.dt, &centre, centres});
            return;
        }
        const double step = block.dt * (value * weights.c0 + weights.rest);
        c.centre = centre;
        c.drift = RoundedStep(centre, step);
        const double end = centre + static_cast<double>(block.count) * c.drift;
        if (AddsTheSame(centre, step, c.drift, end)) {
            c.centres = nullptr;
            centre = end;
        } else {
            centre = Loops().Accumulate(centre, step, centres, block.count);
        }
    }

  private:
    Weights WeightsOf(const CoefficientGroup& group) const {
        return group.For(block.parameters, block.controllers, v.vel, v.key);
    }

    RunningVoice& v;
    const MotionBlock& block;
    VoiceSpace& space;
    Envelopes envelopes;
};

/// The centres that drift at changing speeds.
struct Drifts {
    std::array<Drift, 2 * kMovedTogether> all;
    std::size_t count = 0;

    void Add(const Drift& drift) { all[count++] = drift; }
};

} // namespace

void Move(std::span<RunningVoice* const> voices, const MotionBlock& block, float* x,
          float* y) noexcept {
    const sound_param& p = block.parameters;
    const BlockLoops& loops = Loops();
    std::array<VoiceSpace, kMovedTogether> spaces;
    Drifts drifts;
    alignas(64) std::array<double, 2 * kMovedTogether> phases, sines, cosines;
    for (std::size_t k = 0; k < voices.size(); k++) {
        RunningVoice& v = *voices[k];
        Course course(v, block, spaces[k]);
        course.Centre(0, p.EnvCx, 0, kDcxdt, v.cx, drifts);
        course.Centre(1, p.EnvCy, 1, kDcydt, v.cy, drifts);
        course.Radius(0, p.EnvAx, 2, kAx);
        course.Radius(1, p.EnvAy, 3, kAy);
        phases[2 * k] = v.x.Begin(kTwoPi * p.Fx * v.freq * block.dt, block.offset);
        phases[2 * k + 1] = v.y.Begin(kTwoPi * p.Fy * v.freq * block.dt, block.offset);
    }
    loops.Drifts(drifts.all.data(), drifts.count, block.count);
    loops.Waves(phases.data(), sines.data(), cosines.data(), 2 * voices.size());
    Oscillator::Space space;
    for (std::size_t k = 0; k < voices.size(); k++) {
        const auto place = [&](std::size_t coordinate, Oscillator& oscillator, float* places) {
            const std::size_t i = 2 * k + coordinate;
            const Oscillator::Waves w =
                oscillator.Advance(sines[i], cosines[i], block.count, space);
            Coordinate& c = spaces[k].coordinates[coordinate];
            c.a = coordinate == 0 ? w.cosine : w.sine;
            c.b = coordinate == 0 ? -w.sine : w.cosine;
            c.cosines = w.cosines;
            c.sines = w.sines;
            loops.Places(c, places + k * block.count, block.count);
        };
        place(0, voices[k]->x, x);
        place(1, voices[k]->y, y);
    }
}

} // namespace vexa
