// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/EnvelopeTrack.h"

namespace vexa {

bool EnvelopeTrack::Holds(const EnvelopeCurve& next, float first, float last, bool released,
                          float level) noexcept {
    if (curve != next.Number() || first > piece.until) {
        curve = next.Number();
        piece = next.PieceAt(first, released, level);
    }
    return piece.constant && last <= piece.until;
}

void EnvelopeTrack::Values(const EnvelopeCurve& next, const float* t, bool released, float level,
                           float* values, std::size_t count) const noexcept {
    if (t[count - 1] <= piece.until)
        Loops().Line(piece.line, t, values, count);
    else
        next.Values(t, released, level, values, count);
}

} // namespace vexa
