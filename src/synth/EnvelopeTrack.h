// SPDX-License-Identifier: GPL-3.0-or-later
// An envelope as one note follows it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/EnvelopeCurve.h"

#include <cstddef>
#include <limits>

namespace vexa {

/// Remembers the piece of the curve that the note is in, which mostly lasts for many blocks. Media
/// thread.
class VEXA_REALTIME EnvelopeTrack {
  public:
    /// A note or its release begins.
    void Restart() { curve = 0; }

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
    void Values(const EnvelopeCurve& next, const float* t, bool released, float level,
                float* values, std::size_t count) const noexcept;

  private:
    /// Number of the curve that the piece is of; 0 for none.
    std::uint64_t curve = 0;
    EnvelopeCurve::Piece piece{};
};

} // namespace vexa
