// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Envelope.h"

namespace vexa {

Envelope::Envelope(float minimum, float maximum, float timeRange)
    : minimum(minimum),
      maximum(maximum),
      timeRange(timeRange),
      split(2 * timeRange / 3),
      points{{0, false, InitialValue()}},
      curve(EnvelopeCurve(points, InitialValue())) {}

void Envelope::ProduceCalcPts() {
    curve.Publish(EnvelopeCurve(points, InitialValue()));
}

} // namespace vexa
