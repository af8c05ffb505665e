// SPDX-License-Identifier: GPL-3.0-or-later
#include "instrument/OrbitCurve.h"

#include "instrument/PlaneFollower.h"
#include "synth/Coefficients.h"
#include "synth/Envelope.h"
#include "synth/Orbit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace vexa {

namespace {

constexpr double kTurn = 2 * std::numbers::pi;
/// The interval, in seconds, and the number of the moments at which the orbit of kShownNote is
/// computed.
constexpr float kStep = 0.01F;
constexpr int kSteps = 101;
/// The number of points that are computed at a time.
constexpr std::size_t kPiece = 256;

/// Envelopes in the order of EnvelopePlaces().
enum Place : std::size_t { kDriftX, kDriftY, kRadiusX, kRadiusY };

float ValueOf(const SoundRecords& records, Place place, float t, const VoiceView& v) {
    const Envelope& envelope = *(records.parameters.*EnvelopePlaces()[place].target);
    return envelope.Value(t, v.released, v.rellevel[place]);
}

/// Returns the phase at which the present period began.
double BeginOf(double phase, double turns) {
    const double period = kTurn * std::abs(turns);
    return period > 0 ? phase - std::fmod(phase, period) : phase;
}

OrbitPath PathOf(const SoundRecords& records, const VoiceView& v, const OrbitSums& sums) {
    const auto t = static_cast<float>(v.t);
    const double fx = records.parameters.Fx, fy = records.parameters.Fy;
    const double begunx = v.phasex - BeginOf(v.phasex, fx);
    const double periods = fx != 0 ? begunx / (kTurn * fx) : 0;
    return {v.cx,
            v.cy,
            ValueOf(records, kRadiusX, t, v) * sums[4],
            ValueOf(records, kRadiusY, t, v) * sums[5],
            BeginOf(v.phasex, fx),
            fx != 0 ? v.phasey - periods * kTurn * fy : BeginOf(v.phasey, fy),
            fx,
            fy};
}

/// Returns the widest orbit of kShownNote in its first second.
OrbitPath UsualOrbit(const SoundRecords& records) {
    VoiceView v{};
    v.vel = kShownNote.vel;
    v.key = kShownNote.key;
    const OrbitSums sums = SumsOf(v, records.parameters, records.controllers);
    const auto center = [&](const CoefficientGroup& group) {
        const Weights w = group.For(records.parameters, records.controllers, v.vel, v.key);
        return w.c0 + w.rest;
    };
    v.cx = center(kCx0);
    v.cy = center(kCy0);
    OrbitPath widest{};
    double most = -1;
    for (int i = 0; i < kSteps; i++) {
        const float t = kStep * static_cast<float>(i);
        v.t = t;
        const OrbitPath path = PathOf(records, v, sums);
        if (const double width = std::hypot(path.ax, path.ay); width > most) {
            most = width;
            widest = path;
        }
        v.cx += kStep * (ValueOf(records, kDriftX, t, v) * sums[0] + sums[2]);
        v.cy += kStep * (ValueOf(records, kDriftY, t, v) * sums[1] + sums[3]);
    }
    return widest;
}

} // namespace

OrbitPath NewestOrbit(const SoundRecords& records) {
    const int newest = NewestSlot(records.voices);
    if (newest < 0)
        return UsualOrbit(records);
    const VoiceView v = Look(records.voices[static_cast<std::size_t>(newest)]);
    return PathOf(records, v, SumsOf(v, records.parameters, records.controllers));
}

void FollowOrbit(const PlaneFunction& f, const OrbitPath& path, std::span<float> values) {
    std::array<float, kPiece> x, y;
    for (std::size_t done = 0; done < values.size(); done += kPiece) {
        const std::size_t count = std::min(kPiece, values.size() - done);
        for (std::size_t i = 0; i < count; i++) {
            const double share = double(done + i) / double(values.size());
            const double phasex = path.phasex + kTurn * path.turnsx * share;
            const double phasey = path.phasey + kTurn * path.turnsy * share;
            x[i] = static_cast<float>(path.cx + path.ax * std::cos(phasex));
            y[i] = static_cast<float>(path.cy + path.ay * std::sin(phasey));
        }
        f.Evaluate(x.data(), y.data(), values.data() + done, count);
    }
    std::transform(values.begin(), values.end(), values.begin(), Heard);
}

} // namespace vexa
