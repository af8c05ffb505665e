// SPDX-License-Identifier: GPL-3.0-or-later
// The two ears read the plane at two places of the orbit.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"
#include "synth/Ramp.h"
#include "synth/SoundParam.h"

#include <array>
#include <cstddef>

namespace vexa {

/// The angle, in radians, by which an oscillator's phase is earlier for the left ear, and later for
/// the right one, over a block.
struct EarTurn {
    /// The angle at the block's beginning, or, where there are `angles`, at each moment of it; in
    /// radians.
    double angle = 0;
    const double* angles = nullptr;
    double sine = 0, cosine = 1;

    /// Returns the angle at moment i of the block.
    VEXA_REALTIME double At(std::size_t i) const noexcept { return angles ? angles[i] : angle; }

    /// The waves that the ears hear of a phase with this sine and cosine, while the angle stays.
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
    /// Begins a block of `count` samples, `offset` after its cell. The angles get where the spread
    /// (degrees) has them within `ramp` samples; the first block finds them there.
    void Begin(const sound_param& p, double spread, std::size_t ramp, std::size_t offset,
               std::size_t count) noexcept;

    /// True where a block in which the ears are wanted so far apart, in degrees, leaves them where
    /// they are.
    bool StayAt(const sound_param& p, double spread) const noexcept;

    /// True where the ears may hear different things in this block.
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
