// SPDX-License-Identifier: GPL-3.0-or-later
// An envelope as one note follows it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/EnvelopeCurve.h"
#include "synth/Ramp.h"

#include <cstddef>
#include <limits>

namespace vexa {

/// Remembers the piece of the curve that the note is in, which mostly lasts for many blocks, and
/// what was heard last: a curve that takes over under the note does not step. Media thread.
class VEXA_REALTIME EnvelopeTrack {
  public:
    /// A note or its release begins.
    void Restart() { curve = 0; }
    /// What was heard is of no account any more: the next curve takes over at once.
    void Forget() {
        heard = 0;
        lag.Set(0);
    }

    /// Goes on to the times from `first` to `last`, neither before those of the call before.
    /// `released` and `level` as for EnvelopeCurve::Value, the same since Restart; the curve may be
    /// another than before. True if the value stays the same over that time.
    bool Holds(const EnvelopeCurve& next, float first, float last, bool released,
               float level) noexcept;
    /// True where Holds would be true for all times from t on.
    bool HoldsForGood(const EnvelopeCurve& next, float t, bool released, float level) noexcept {
        return Holds(next, t, std::numeric_limits<float>::infinity(), released, level);
    }
    /// The value, where it stays the same.
    float Value() const noexcept { return static_cast<float>(piece.line.base); }
    /// Gives what next.Values gives, for times between first and last.
    void Values(const EnvelopeCurve& next, const double* t, bool released, float level,
                float* values, std::size_t count) const noexcept;

    /// Begins a block, `offset` samples after its cell, in which the first value is to be `first`.
    /// Where another curve was heard before, the difference fades within `smooth` samples, in a
    /// straight line. True where something is to be added to the values of this block.
    bool Follow(const EnvelopeCurve& next, float first, std::size_t smooth,
                std::size_t offset) noexcept;
    /// Adds it.
    void AddLag(RampParts& parts, float* values, std::size_t count) noexcept;
    /// The last value of the block.
    void Heard(float value) noexcept { last = value; }
    /// True where values are still to be added.
    bool Lags() const noexcept { return lag.Moves(); }
    /// Ramp::CellsAlike of what is added.
    std::size_t CellsAlike(std::size_t most) const noexcept { return lag.CellsAlike(most); }
    /// Goes on at a rate that is `ratio` times the one so far.
    void Rescale(double ratio) noexcept { lag.Rescale(ratio); }

  private:
    /// Number of the curve that the piece is of; 0 for none.
    std::uint64_t curve = 0;
    EnvelopeCurve::Piece piece{};
    /// Number of the curve that was heard last, 0 for none, and the value.
    std::uint64_t heard = 0;
    float last = 0;
    /// What is left of the difference to the curve before.
    Ramp<double> lag;
};

} // namespace vexa
