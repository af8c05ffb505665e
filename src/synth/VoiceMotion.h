// SPDX-License-Identifier: GPL-3.0-or-later
// Moves the voices' points along their orbits.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Coefficients.h"
#include "synth/Ears.h"
#include "synth/OwnControllers.h"
#include "synth/RunningVoice.h"
#include "synth/SoundParam.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vexa {

/// The motion of all voices over one block, with the coefficients, controllers and envelopes that
/// there are when it is made. Media thread, inside a section of a reader of the envelopes.
class VEXA_REALTIME VoiceMotion {
  public:
    /// Voices that are moved at a time, side by side.
    static constexpr std::size_t kTogether = 4;

    /// A block of `count` samples, `dt` seconds each, that begins `offset` samples after its cell
    /// (Oscillator).
    VEXA_REALTIME VoiceMotion(const sound_param& p, const ControllerTable& controllers,
                              const OwnControllers& own, double dt, std::size_t offset,
                              std::size_t count) noexcept;

    /// Moves up to kTogether voices: writes the places of voice k to x[k * count + i] and
    /// y[k * count + i], and up to kSlack floats beyond, and advances the voices.
    void Move(std::span<RunningVoice* const> voices, float* x, float* y) const noexcept;
    /// The same for both ears.
    void Move(std::span<RunningVoice* const> voices, const Ears& ears, float* leftx, float* lefty,
              float* rightx, float* righty) const noexcept;

    /// Whether the sums of the voice's formulas stay as they are now, and it does not come to a
    /// stand for good, in so many cells from here on.
    bool GoesOn(RunningVoice& v, std::size_t cells) const noexcept;
    /// As Move, for whole cells of any number of voices that go on: writes the places of voice k in
    /// cell i from x[(i * voices.size() + k) * kMostSamples] on. The motion is that of a whole
    /// cell.
    void MoveCells(std::span<RunningVoice* const> voices, std::size_t cells, float* x,
                   float* y) const noexcept;

    /// Whether the point of a released voice stays where it is as long as the sound is the same: no
    /// radius, no drift, and no envelope that would still change that.
    bool Stands(RunningVoice& v) const noexcept;
    /// Lets the block go by for a voice that stands.
    void Pass(RunningVoice& v) const noexcept;

    /// What the motion of a voice depends on besides the voice and its envelopes' points.
    struct Sound {
        Coefficients driftx, drifty, radiusx, radiusy;
        /// Numbers of the curves, in the order of EnvelopePlaces.
        std::array<std::uint64_t, 4> curves;
        bool operator==(const Sound&) const = default;
    };
    Sound Of() const noexcept {
        return {x.drift,
                y.drift,
                x.radius,
                y.radius,
                {x.driftEnvelope.curve.Number(), y.driftEnvelope.curve.Number(),
                 x.radiusEnvelope.curve.Number(), y.radiusEnvelope.curve.Number()}};
    }

  private:
    /// One coordinate's part of the sound.
    struct Axis {
        /// An envelope and its number (EnvelopePlaces).
        struct NumberedCurve {
            const EnvelopeCurve& curve;
            std::size_t number;
        };
        Coefficients drift, radius;
        NumberedCurve driftEnvelope, radiusEnvelope;
        /// Of x 0, of y 1.
        std::size_t number;
        /// Radians per second of a note of 1 Hz.
        double turn;
    };
    bool GoesOn(const Axis& axis, const RunningVoice& v) const noexcept;
    bool HoldsFor(const Axis& axis, RunningVoice& v, double centre, double length, double end,
                  SteadyCoordinate& coordinate) const noexcept;
    bool MoveSteadily(RunningVoice& v, std::size_t cells, std::size_t stride, float* placesx,
                      float* placesy) const noexcept;

    struct Space;
    struct Moving;
    class Times;
    class Drifts;

    void Begin(std::span<RunningVoice* const> voices, Moving& moving) const noexcept;
    bool Stands(const Axis& axis, RunningVoice& v) const noexcept;
    Weights Of(const Coefficients& sum, const RunningVoice& v) const noexcept {
        return sum.For(v.vel, v.key, own.Of(sum.number, v.own, sum.control));
    }
    double Sum(RunningVoice& v, std::size_t number, double target) const noexcept;
    const double* Factors(RunningVoice& v, double* space) const noexcept;
    double Turn(const Axis& axis, const RunningVoice& v, const double* factors) const noexcept;
    void PutRadius(const Axis& axis, RunningVoice& v, Times& times, Space& space,
                   Coordinate& coordinate) const noexcept;
    void PutCentre(const Axis& axis, RunningVoice& v, double& centre, Times& times, Drifts& drifts,
                   Space& space, Coordinate& coordinate) const noexcept;

    OwnControllers own;
    double dt;
    std::size_t offset, count;
    Axis x, y;
};

} // namespace vexa
