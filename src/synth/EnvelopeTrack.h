// SPDX-License-Identifier: GPL-3.0-or-later
// The progress of one note through an envelope.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/EnvelopeCurve.h"
#include "synth/Ramp.h"

#include <cstddef>
#include <limits>

namespace vexa {

/// Caches the note's current piece of the curve, which usually lasts for many blocks, and the last
/// value in use, so that a new curve during the note causes no step. Media thread.
class VEXA_REALTIME EnvelopeTrack {
  public:
    /// Begins a note or its release.
    void Restart() { curve = 0; }
    /// Forgets the last value, so that the next curve takes effect at once.
    void Forget() {
        heard = 0;
        lag.Set(0);
    }

    /// Advances to the times from `first` to `last`, which never decrease between calls. `released`
    /// and `level` are those of EnvelopeCurve::Value and stay the same between Restarts; the curve
    /// may differ from the previous call's. Returns true if the value is constant over that time.
    bool Holds(const EnvelopeCurve& next, float first, float last, bool released,
               float level) noexcept;
    /// Returns true if Holds would be true for all times from t on.
    bool HoldsForGood(const EnvelopeCurve& next, float t, bool released, float level) noexcept {
        return Holds(next, t, std::numeric_limits<float>::infinity(), released, level);
    }
    /// Returns the value if it is constant (Holds).
    float Value() const noexcept { return static_cast<float>(piece.line.base); }
    /// Writes the same values as next.Values, for times between first and last.
    void Values(const EnvelopeCurve& next, const double* t, bool released, float level,
                float* values, std::size_t count) const noexcept;

    /// Begins a block `offset` samples after the beginning of its cell; `first` is the curve's
    /// value at the block's first sample. If another curve was in use before, the difference from
    /// its last value fades linearly within `smooth` samples. Returns true if a difference must be
    /// added to the values of this block.
    bool Follow(const EnvelopeCurve& next, float first, std::size_t smooth,
                std::size_t offset) noexcept;
    /// Adds the fading difference to the block's values.
    void AddLag(RampParts& parts, float* values, std::size_t count) noexcept;
    /// Records the last value of the block.
    void Heard(float value) noexcept { last = value; }
    /// Returns true while a difference is still fading.
    bool Lags() const noexcept { return lag.Moves(); }
    /// Returns Ramp::CellsAlike of the fading difference.
    std::size_t CellsAlike(std::size_t most) const noexcept { return lag.CellsAlike(most); }
    /// Continues at a sample rate that is `ratio` times the previous one.
    void Rescale(double ratio) noexcept { lag.Rescale(ratio); }

  private:
    /// The number of the curve to which the piece belongs; 0 for none.
    std::uint64_t curve = 0;
    EnvelopeCurve::Piece piece{};
    /// The number of the curve that was last in use, 0 for none, and its value.
    std::uint64_t heard = 0;
    float last = 0;
    /// The rest of the difference from the previous curve.
    Ramp<double> lag;
};

} // namespace vexa
