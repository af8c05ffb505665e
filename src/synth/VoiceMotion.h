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

/// The motion of all voices over one block, with the coefficients, controllers and envelopes at the
/// time of construction. Media thread, inside a section of a reader of the envelopes.
class VEXA_REALTIME VoiceMotion {
  public:
    /// The largest number of voices that are moved together.
    static constexpr std::size_t kTogether = 8;

    /// Prepares a block of `count` samples, `dt` seconds each, that begins `offset` samples after
    /// the beginning of its cell (Oscillator); or up to kMostCells whole cells.
    VEXA_REALTIME VoiceMotion(const sound_param& p, const ControllerTable& controllers,
                              const OwnControllers& own, double dt, std::size_t offset,
                              std::size_t count) noexcept;

    /// The arrays into which an ear's places, x and y, are written.
    struct Places {
        float *x, *y;
    };

    /// Moves up to kTogether voices over a block: writes the places of voice k to x[k * count + i]
    /// and y[k * count + i], and up to kSlack floats beyond, and advances the voices.
    void Move(std::span<RunningVoice* const> voices, Places places) const noexcept;
    /// Does the same for both ears.
    void Move(std::span<RunningVoice* const> voices, const Ears& ears, Places left,
              Places right) const noexcept;

    /// Returns the number of whole cells from here on, at most `most`, over which the voice moves
    /// in the same way: the targets of its sums are unchanged, no ramp of a sum or of an envelope's
    /// fading difference ends before the last of the cells, and the voice does not stop for good.
    std::size_t CellsFor(RunningVoice& v, std::size_t most) const noexcept;
    /// Moves any number of voices over several cells, as Move does, provided that they move in the
    /// same way in all of them and their pitch is constant. Writes the places of voice k in cell i
    /// from x[(i * voices.size() + k) * kMostSamples] on. If `ears` is null it writes only to
    /// `left`; otherwise the ears' angles must be constant.
    void MoveCells(std::span<RunningVoice* const> voices, const Ears* ears, Places left,
                   Places right) const noexcept;

    /// Returns true if the point of a released voice stands still as long as the sound is the same:
    /// radius and drift are 0, and no envelope can change that any more.
    bool Stands(RunningVoice& v) const noexcept;
    /// Advances a standing voice past the block.
    void Pass(RunningVoice& v) const noexcept;

    /// The data on which a voice's motion depends besides the voice itself and the envelopes'
    /// points.
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
        /// 0 for x and 1 for y.
        std::size_t number;
        /// The angular speed of a note of 1 Hz, in radians per second.
        double turn;
    };
    struct Space;
    struct Moving;
    struct Turning;
    class Times;
    class Drifts;

    std::size_t CellsFor(const Axis& axis, const RunningVoice& v, std::size_t most) const noexcept;
    bool TurnsEvenly(RunningVoice& v, Turning& turning, std::size_t voice) const noexcept;
    void MoveTogether(std::span<RunningVoice* const> voices, Turning& turning, std::size_t stride,
                      const Ears* ears, Places left, Places right) const noexcept;
    void MoveAlone(RunningVoice& v, std::size_t stride, const Ears* ears, Places left,
                   Places right) const noexcept;
    void PutOrbits(std::span<RunningVoice* const> voices, Moving& moving) const noexcept;
    void Begin(std::span<RunningVoice* const> voices, Moving& moving) const noexcept;
    bool Stands(const Axis& axis, RunningVoice& v) const noexcept;
    Weights Of(const Coefficients& sum, const RunningVoice& v) const noexcept {
        return sum.For(v.vel, v.key, own.Of(sum.number, v.own, sum.control));
    }
    double Sum(RunningVoice& v, std::size_t number, double target) const noexcept;
    const double* Factors(RunningVoice& v, double* space) const noexcept;
    double Turn(const Axis& axis, const RunningVoice& v, const double* factors) const noexcept;
    void PutRadius(const Axis& axis, RunningVoice& v, Times& times, Moving& moving,
                   std::size_t place) const noexcept;
    void PutCentre(const Axis& axis, RunningVoice& v, double& centre, Times& times, Moving& moving,
                   std::size_t place) const noexcept;

    OwnControllers own;
    double dt;
    std::size_t offset, count;
    Axis x, y;
};

} // namespace vexa
