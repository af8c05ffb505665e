// SPDX-License-Identifier: GPL-3.0-or-later
// An envelope: the points that the user edits, and the published curve that the renderer reads.
#pragma once

#include "kits/support/Published.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"
#include "synth/EnvelopeCurve.h"

#include <vector>

namespace vexa {

/// The points belong to the window thread. Its changes take effect with the next ProduceCalcPts();
/// until then the other threads use the previous curve.
class Envelope {
  public:
    /// Makes an envelope with values from minimum to maximum over timeRange seconds, of which the
    /// first two thirds belong to the key-down part. It starts with one key-down point at time 0,
    /// of value 0 or, if 0 is outside the range, of the minimum.
    Envelope(float minimum, float maximum, float timeRange);

    float Minimum() const { return minimum; }
    float Maximum() const { return maximum; }
    float TimeRange() const { return timeRange; }
    /// Returns the length of the key-down part in seconds; the release part has the rest of the
    /// time range.
    float Split() const { return split; }

    /// The points as edited: key-down points come first, and each kind is in increasing time. The
    /// caller changes them immediately and keeps no reference. Window thread.
    std::vector<EnvPoint>& Points() {
        changes++;
        return points;
    }
    const std::vector<EnvPoint>& Points() const { return points; }
    /// Counts how often the points may have changed. Window thread.
    uint64 Changes() const { return changes; }

    /// Publishes the points as the current curve. Window thread; readers never wait.
    void ProduceCalcPts();

    /// Returns the published curve; see Published::Get for its lifetime. Any thread.
    VEXA_REALTIME const EnvelopeCurve& Curve() const noexcept { return curve.Get(); }

    /// Returns Curve().Value. The window thread may call it at any time, other threads only inside
    /// a Reader::Section.
    VEXA_REALTIME float Value(float t, bool released, float level) const noexcept {
        return Curve().Value(t, released, level);
    }

  private:
    float InitialValue() const { return minimum <= 0 && 0 <= maximum ? 0.0F : minimum; }

    float minimum;
    float maximum;
    float timeRange;
    float split;
    std::vector<EnvPoint> points;
    uint64 changes = 0;
    kits::Published<EnvelopeCurve> curve;
};

} // namespace vexa
