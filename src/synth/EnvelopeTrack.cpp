// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/EnvelopeTrack.h"

#include <array>
#include <utility>

namespace vexa {

bool EnvelopeTrack::Holds(const EnvelopeCurve& next, float first, float last, bool released,
                          float level) noexcept {
    if (curve != next.Number() || first > piece.until) {
        curve = next.Number();
        piece = next.PieceAt(first, released, level);
    }
    return piece.constant && last <= piece.until;
}

void EnvelopeTrack::Values(const EnvelopeCurve& next, const double* t, bool released, float level,
                           float* values, std::size_t count) const noexcept {
    if (t[count - 1] <= piece.until)
        Loops().Line(piece.line, t, values, count);
    else
        next.Values(t, released, level, values, count);
}

bool EnvelopeTrack::Follow(const EnvelopeCurve& next, float first, std::size_t smooth,
                           std::size_t offset) noexcept {
    lag.Aim(0, 0, offset);
    const std::uint64_t before = std::exchange(heard, next.Number());
    if (before != heard && before != 0 && smooth > 0) {
        lag.Set(double(last) - first);
        lag.Aim(0, smooth, offset);
    }
    return lag.Varies();
}

void EnvelopeTrack::AddLag(RampParts& parts, float* values, std::size_t count) noexcept {
    alignas(64) std::array<double, kCellRoom> lags;
    lag.Write(parts, lags.data(), count);
    for (std::size_t i = 0; i < count; i++)
        values[i] = static_cast<float>(values[i] + lags[i]);
}

} // namespace vexa
