// SPDX-License-Identifier: GPL-3.0-or-later
// Values that reach a new target along a straight line instead of in a step.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"
#include "synth/Pitch.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>
#include <cstddef>

namespace vexa {

/// The completed fraction of a ramp at each sample of a block. Most ramps run in parallel because
/// one controller moves them all, so the fractions of the last ramp are cached. Media thread.
class RampParts {
  public:
    /// Prepares the fractions of a block of `count` samples.
    VEXA_REALTIME explicit RampParts(std::size_t count) : count(count) {}

    VEXA_REALTIME const double* Of(std::size_t newDone, std::size_t newLength) noexcept {
        if (newDone != done || newLength != length)
            Loops().Parts(newDone, newLength, parts.data(), count);
        done = newDone;
        length = newLength;
        return parts.data();
    }

  private:
    std::size_t count;
    std::size_t done = 0, length = 0;
    alignas(64) std::array<double, kCellRoom> parts;
};

/// Converts a number of samples to a rate that is `ratio` times the current one.
VEXA_REALTIME inline std::size_t Rescaled(std::size_t samples, double ratio) noexcept {
    return static_cast<std::size_t>(std::round(static_cast<double>(samples) * ratio));
}

/// A value that moves to its target in a straight line. Media thread.
///
/// Whether it varies is decided for whole cells (Oscillator), so that the choice of the computation
/// does not depend on where blocks split a cell.
template<class Number>
class VEXA_REALTIME Ramp {
  public:
    VEXA_REALTIME explicit Ramp(Number initial = 0) : from(initial), to(initial) {}

    /// Sets the value and the target at once.
    void Set(Number value) noexcept { *this = Ramp(value); }

    /// Begins a block `offset` samples after the beginning of its cell. The value goes to `target`
    /// within `samples` and reaches it exactly; a new target starts a new ramp. Returns whether the
    /// target is new.
    bool Aim(Number target, std::size_t samples, std::size_t offset) noexcept {
        if (offset == 0 && done == length)
            varies = false;
        if (target == to)
            return false;
        from = Now();
        to = target;
        done = 0;
        length = samples;
        varies = varies || samples > 0;
        return true;
    }

    /// Returns true if the value may move in this block.
    bool Varies() const noexcept { return varies; }
    /// Returns true if the value is at `target`, so that a block with this target leaves it
    /// unchanged.
    bool StaysAt(Number target) const noexcept { return !varies && to == target; }
    /// Returns the number of whole cells, at most `most`, that are like the first of them: the
    /// value varies in all of them or stays constant in all, provided that the target does not
    /// change.
    std::size_t CellsAlike(std::size_t most) const noexcept {
        const std::size_t left = (length - done + kMostSamples - 1) / kMostSamples;
        return left > 0 && left < most ? left : most;
    }
    Number Now() const noexcept {
        if (done == length)
            return to;
        return from + (to - from) * (static_cast<Number>(done) / static_cast<Number>(length));
    }
    /// Returns the target, which is the value itself once it has arrived.
    Number End() const noexcept { return to; }
    bool Moves() const noexcept { return done < length; }
    /// Writes the next `count` values, for the block of the fractions, and advances past them. The
    /// arrays have the room that BlockLoops needs.
    void Write(RampParts& parts, double* values,
               std::size_t count) noexcept requires std::same_as<Number, double> {
        if (!Moves()) {
            std::fill_n(values, count, to);
            return;
        }
        Loops().Ramp({from, to}, parts.Of(done, length), values, count);
        Pass(count);
    }
    /// Advances by a number of samples.
    void Pass(std::size_t samples) noexcept {
        done = samples < length - done ? done + samples : length;
    }
    /// Returns the remaining samples.
    std::size_t Left() const noexcept { return length - done; }
    /// Continues at a sample rate that is `ratio` times the previous one.
    void Rescale(double ratio) noexcept {
        from = Now();
        length = Rescaled(Left(), ratio);
        done = 0;
    }

  private:
    Number from, to;
    std::size_t done = 0, length = 0;
    bool varies = false;
};

/// An interval that moves to another one linearly, so that its frequency factor moves
/// exponentially. Media thread.
class VEXA_REALTIME PitchRamp {
  public:
    /// Sets the interval at once, in semitones like all intervals here.
    void Set(double interval) noexcept {
        line.Set(interval);
        factor = end = RatioOf(interval);
    }
    void Aim(double target, std::size_t samples, std::size_t offset) noexcept {
        const double begin = line.Now();
        if (!line.Aim(target, samples, offset))
            return;
        end = RatioOf(target);
        if (samples == 0)
            factor = end;
        else
            ratio = RatioOf((target - begin) / static_cast<double>(samples));
    }
    bool Varies() const noexcept { return line.Varies(); }
    bool StaysAt(double target) const noexcept { return line.StaysAt(target); }
    double Factor() const noexcept { return factor; }
    /// Continues at a sample rate that is `by` times the previous one.
    void Rescale(double by) noexcept {
        line.Rescale(by);
        if (line.Moves())
            ratio = RatioOf((line.End() - line.Now()) / static_cast<double>(line.Left()));
        else
            factor = end;
    }
    /// Multiplies each value by the factor at its sample, and advances.
    void Scale(double* factors, std::size_t count) noexcept {
        for (std::size_t i = 0; i < count; i++) {
            factors[i] *= factor;
            line.Pass(1);
            factor = line.Moves() ? factor * ratio : end;
        }
    }

  private:
    Ramp<double> line;
    double factor = 1, ratio = 1, end = 1;
};

} // namespace vexa
