// SPDX-License-Identifier: GPL-3.0-or-later
// The mix makes the voices' sum of the values at their points: by low-cut filters, volumes of
// channels, and fading ends.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Playing.h"
#include "synth/Ramp.h"
#include "synth/RunningVoice.h"

#include <array>
#include <cstddef>
#include <span>

namespace vexa {

/// Voices whose output is scaled alike are filtered side by side. Media thread.
class VEXA_REALTIME OutputMix {
  public:
    /// The records are shared and outlive this.
    OutputMix(const Playing& playing, const ChannelVolumes& volumes)
        : playing(playing), volumes(volumes) {}

    /// The samples in which the volume of a channel and that of the sum get where they are wanted,
    /// and those that an end takes.
    struct Times {
        std::size_t channel, sum, fade;
    };
    /// Begins a block of `count` samples, `offset` after its cell.
    void Begin(const Times& times, std::size_t offset, std::size_t count) noexcept;

    /// True where a block that begins now leaves all volumes as they are.
    bool Stays() const noexcept;
    /// Begins blocks of `count` samples, in place of Begin, as long as it stays so.
    void GoOn(std::size_t newCount) noexcept { count = newCount; }

    /// Returns the factor on the sum at the block's beginning.
    float Level() const noexcept { return level.Now(); }
    /// Writes an ear's sum by the gain and by the factor of each moment.
    void Write(const float* sum, float gain, float* out, std::size_t count) const noexcept;
    /// Returns the factor on a voice's output that its channel has.
    float Volume(const RunningVoice& v) const noexcept {
        return Between(v.before, channels[v.channel], v.arrives);
    }
    /// True where what a voice that rests adds to the sum may change within this block.
    bool Moves(const RunningVoice& v) const noexcept {
        return channels[v.channel].Varies() || v.gains[0].Varies() || v.gains[1].Varies();
    }
    /// Adds the output of a voice that rests to the sum of an ear: `out`, at each moment by the
    /// volume and the gain of that moment.
    void AddResting(const RunningVoice& v, float out, std::size_t side, float* sum) const noexcept;

    /// Returns the factor on a voice's output that its end has.
    float Fade(const RunningVoice& v) const noexcept {
        return v.ends ? static_cast<float>(v.left) / static_cast<float>(fadeLength) : 1.0F;
    }

    /// Puts voices that are scaled alike side by side. Without volumes and ends the order stays.
    void Sort(std::span<RunningVoice*> voices) const noexcept;

    /// What one ear hears: its filters, their input, samples[k * count + i] for voice k at moment
    /// i, and the sum of their output, with room as for BlockLoops. Ear 0 is the left one.
    struct Ear {
        LowCutFilter RunningVoice::*filter;
        const float* samples;
        float* sum;
        std::size_t side;
    };
    /// Filters the voices' input and adds their output to the sums. True where input was beyond
    /// kMostHeard. The same for several blocks one after the other, whose input and sums stand one
    /// after the other too.
    bool Add(std::span<RunningVoice* const> voices, std::span<const Ear> ears,
             std::size_t blocks = 1) noexcept;

  private:
    static float Between(float before, const Ramp<float>& after,
                         const Ramp<float>& arrives) noexcept {
        const float end = after.Now();
        return arrives.Moves() ? before + (end - before) * arrives.Now() : end;
    }
    /// Returns the volume that is wanted of channel i.
    float Wanted(std::size_t i) const noexcept { return playing.given ? float(volumes[i]) : 1.0F; }
    std::size_t Group(const RunningVoice& v) const noexcept;
    /// True where no other voice is scaled as this one is.
    static bool IsAlone(const RunningVoice& v) noexcept {
        return v.ends || v.scaled || v.arrives.Varies();
    }

    const Playing& playing;
    const ChannelVolumes& volumes;
    std::array<Ramp<float>, 16> channels;
    Ramp<float> level{1};
    float decibels = 0;
    std::size_t fadeLength = 1, count = 0;
    bool begun = false;
};

} // namespace vexa
