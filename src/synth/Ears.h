// SPDX-License-Identifier: GPL-3.0-or-later
// The two ears: the left and the right channel read the plane at two points of the orbit.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"
#include "synth/Ramp.h"
#include "synth/SoundParam.h"

#include <array>
#include <cstddef>

namespace vexa {

/// The angle by which an oscillator's phase is earlier for the left ear and later for the right
/// one, over a block.
struct EarTurn {
    /// The angle in radians: constant, or, if `angles` is not null, one per sample of the block.
    double angle = 0;
    const double* angles = nullptr;
    double sine = 0, cosine = 1;

    /// Returns the angle at moment i of the block.
    VEXA_REALTIME double At(std::size_t i) const noexcept { return angles ? angles[i] : angle; }

    /// The sines and cosines at the two ears' phases, for a constant angle.
    struct Heard {
        double leftSine, leftCosine, rightSine, rightCosine;
    };
    VEXA_REALTIME Heard Of(double otherSine, double otherCosine) const noexcept {
        const double sc = otherSine * cosine, cs = otherCosine * sine;
        const double cc = otherCosine * cosine, ss = otherSine * sine;
        return {sc - cs, cc + ss, sc + cs, cc - ss};
    }
};

/// The left ear reads the plane half of the spread earlier on the orbit, the right one half of it
/// later: at phases less and more by Fx spread / 2 in x and Fy spread / 2 in y. Media thread.
class VEXA_REALTIME Ears {
  public:
    /// Begins a block of `count` samples, `offset` samples after the beginning of its cell. The
    /// angles reach those of the spread (degrees) within `ramp` samples; the first block starts
    /// with them.
    void Begin(const sound_param& p, double spread, std::size_t ramp, std::size_t offset,
               std::size_t count) noexcept;

    /// Forgets the past: the next block begins with its spread's angles.
    void Restart() noexcept;

    /// Returns true if a block with this spread, in degrees, leaves the angles unchanged.
    bool StayAt(const sound_param& p, double spread) const noexcept;

    /// Returns true if the two ears' signals may differ in this block.
    bool Apart() const noexcept { return x.Apart() || y.Apart(); }
    /// The angles for the oscillators of x and of y.
    const EarTurn& X() const noexcept { return x.turn; }
    const EarTurn& Y() const noexcept { return y.turn; }

  private:
    struct VEXA_REALTIME Axis {
        void Begin(double target, std::size_t ramp, std::size_t offset, std::size_t count) noexcept;
        bool Apart() const noexcept { return angle.Varies() || angle.Now() != 0; }

        Ramp<double> angle;
        EarTurn turn;
        alignas(64) std::array<double, kRoom> angles;
    };

    Axis x, y;
    bool begun = false;
};

} // namespace vexa
