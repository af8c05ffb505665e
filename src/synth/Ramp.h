// SPDX-License-Identifier: GPL-3.0-or-later
// Values that go to where they are wanted in a straight line instead of stepping.
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

/// The parts of their ways that ramps have gone at each moment of a block. Most go side by side, as
/// one hand moves them all: those of the last one are kept. Media thread.
class RampParts {
  public:
    /// Makes the parts for a block of `count` samples.
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

/// Returns how many samples these are at a rate that is `ratio` times theirs.
VEXA_REALTIME inline std::size_t Rescaled(std::size_t samples, double ratio) noexcept {
    return static_cast<std::size_t>(std::round(static_cast<double>(samples) * ratio));
}

/// A value on its way. Media thread.
///
/// Whether it varies is decided for whole cells (Oscillator), so that what is computed in one way
/// or another does not depend on where blocks are cut.
template<class Number>
class VEXA_REALTIME Ramp {
  public:
    VEXA_REALTIME explicit Ramp(Number initial = 0) : from(initial), to(initial) {}

    /// Puts the value there at once.
    void Set(Number value) noexcept { *this = Ramp(value); }

    /// Begins a block, `offset` samples after its cell: the value goes to `target` within
    /// `samples`, which it reaches exactly; it begins anew wherever the target is another. Answers
    /// whether it is another.
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

    /// True where the value may move in this block.
    bool Varies() const noexcept { return varies; }
    /// True where a block in which `target` is wanted finds the value there and leaves it.
    bool StaysAt(Number target) const noexcept { return !varies && to == target; }
    /// Returns in how many whole cells, at most `most`, the value varies if it varies in the first
    /// of them, and stays if it stays there, as long as nothing else is wanted.
    std::size_t CellsAlike(std::size_t most) const noexcept {
        const std::size_t left = (length - done + kMostSamples - 1) / kMostSamples;
        return left > 0 && left < most ? left : most;
    }
    Number Now() const noexcept {
        if (done == length)
            return to;
        return from + (to - from) * (static_cast<Number>(done) / static_cast<Number>(length));
    }
    /// Returns where the value is or goes to.
    Number End() const noexcept { return to; }
    bool Moves() const noexcept { return done < length; }
    /// Writes the next `count` values, those of the parts' block, with room as for BlockLoops, and
    /// lets them go by.
    void Write(RampParts& parts, double* values,
               std::size_t count) noexcept requires std::same_as<Number, double> {
        if (!Moves()) {
            std::fill_n(values, count, to);
            return;
        }
        Loops().Ramp({from, to}, parts.Of(done, length), values, count);
        Pass(count);
    }
    /// Lets samples go by.
    void Pass(std::size_t samples) noexcept {
        done = samples < length - done ? done + samples : length;
    }
    /// Returns the samples that are left.
    std::size_t Left() const noexcept { return length - done; }
    /// Goes on at a rate that is `ratio` times the one so far.
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

/// An interval that goes to another in a straight line, and so its factor on a frequency
/// exponentially. Media thread.
class VEXA_REALTIME PitchRamp {
  public:
    /// Sets the interval at once; it is in semitones, as all intervals here.
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
    /// Goes on at a rate that is `by` times the one so far.
    void Rescale(double by) noexcept {
        line.Rescale(by);
        if (line.Moves())
            ratio = RatioOf((line.End() - line.Now()) / static_cast<double>(line.Left()));
        else
            factor = end;
    }
    /// Multiplies each by the factor at its moment, and goes on.
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
