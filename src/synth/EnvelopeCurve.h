// SPDX-License-Identifier: GPL-3.0-or-later
// An immutable envelope, as the audio and MIDI threads read it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vexa {

/// One point of an envelope.
struct EnvPoint {
    /// Seconds since note-on (key-down point) or since note-off (release point).
    float t = 0;
    /// True for a release point.
    bool fku = false;
    float val = 0;

    bool operator==(const EnvPoint&) const = default;
};

/// A piecewise linear function of time: a key-down part, whose end value is held, and a release
/// part, which starts at the value at the release. Points are expected in order, key-down points
/// first, each kind in increasing time; any other list is safely evaluated by the same rule.
/// Immutable, so any thread may read it.
class VEXA_REALTIME EnvelopeCurve {
  public:
    /// `empty` is the value of a curve without points.
    EnvelopeCurve(std::vector<EnvPoint> points, float empty);

    /// Returns the value at t seconds since note-on (released false) or since note-off (released
    /// true). `level` is the value at note-off, from which the release part starts; ignored before
    /// it.
    float Value(float t, bool released, float level) const noexcept;

    /// Computes values[i] = Value(t[i], released, level) for 0 <= i < count, where t never
    /// decreases and is rounded to floats. The cost hardly depends on the number of points: a piece
    /// is searched for only at the start and at the end of a piece.
    void Values(const double* t, bool released, float level, float* values,
                std::size_t count) const noexcept;

    /// A stretch of time in which the value is linear or constant.
    struct Piece {
        EnvelopeLine line;
        bool constant;
        /// The last moment of the stretch; infinite if it has no end.
        float until;
    };
    /// Returns the piece at t. For a list out of order it returns a piece that ended before all
    /// times.
    Piece PieceAt(float t, bool released, float level) const noexcept;

    /// Returns a number that is unique to this list of points and never 0.
    std::uint64_t Number() const noexcept { return number; }

  private:
    float HeldValue(float t) const noexcept;
    float ReleasedValue(float t, float level) const noexcept;
    /// Returns the value at t of the straight line through points i - 1 and i.
    float Line(std::size_t i, float t) const noexcept;

    std::uint64_t number;
    std::vector<EnvPoint> points;
    float empty;
    /// The first points[keyDown] are key-down points, the others release points.
    std::size_t keyDown;
    /// True if key-down points come first, beginning at 0, and each kind is in increasing time.
    bool ordered;
};

} // namespace vexa
