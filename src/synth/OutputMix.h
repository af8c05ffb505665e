// SPDX-License-Identifier: GPL-3.0-or-later
// Mixes the function's values at the voices' points into a sum: low-cut filters, channel volumes,
// and the fades of voices that were cut off.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Playing.h"
#include "synth/Ramp.h"
#include "synth/RunningVoice.h"

#include <array>
#include <cstddef>
#include <span>

namespace vexa {

/// Mixes the voices; those with equal scaling are filtered side by side. Media thread.
class VEXA_REALTIME OutputMix {
  public:
    /// The records are shared and must outlive the mix.
    OutputMix(const Playing& playing, const ChannelVolumes& volumes)
        : playing(playing), volumes(volumes) {}

    /// The ramp lengths of a channel's volume and of the sum's volume, and the length of a fade, in
    /// samples.
    struct Times {
        std::size_t channel, sum, fade;
    };
    /// Forgets the past: the next block begins with the volumes that are set then.
    void Restart() noexcept;
    /// Begins a block of `count` samples, `offset` samples after the beginning of its cell.
    void Begin(const Times& times, std::size_t offset, std::size_t count) noexcept;

    /// Returns true if a block that begins now leaves all volumes unchanged.
    bool Stays() const noexcept;
    /// Begins blocks of `newCount` samples in place of Begin, as long as Stays is true.
    void GoOn(std::size_t newCount) noexcept { count = newCount; }

    /// Returns the sum's volume at the block's beginning.
    float Level() const noexcept { return level.Now(); }
    /// Writes an ear's sum, multiplied by `gain` and by the sum's volume at each sample.
    void Write(const float* sum, float gain, float* out, std::size_t count) const noexcept;
    /// Returns the channel volume that applies to a voice's output.
    float Volume(const RunningVoice& v) const noexcept {
        return Between(v.before, channels[v.channel], v.arrives);
    }
    /// Returns true if the contribution of a resting voice to the sum may change within this block.
    bool Moves(const RunningVoice& v) const noexcept {
        return channels[v.channel].Varies() || v.gains[0].Varies() || v.gains[1].Varies();
    }
    /// Adds the constant output `out` of a resting voice to the sum of an ear, multiplied by the
    /// volume and the gain at each sample.
    void AddResting(const RunningVoice& v, float out, std::size_t side, float* sum) const noexcept;

    /// Returns the fade factor of a voice that was cut off; 1 for any other voice.
    float Fade(const RunningVoice& v) const noexcept {
        return v.ends ? static_cast<float>(v.left) / static_cast<float>(fadeLength) : 1.0F;
    }

    /// Groups voices with equal scaling. Without volumes and fades the order stays the same.
    void Sort(std::span<RunningVoice*> voices) const noexcept;

    /// The data of one ear: its filters, their input, samples[k * count + i] for voice k at sample
    /// i, and the sum of their output, with the room that BlockLoops needs. Side 0 is left.
    struct Ear {
        LowCutFilter RunningVoice::*filter;
        const float* samples;
        float* sum;
        std::size_t side;
    };
    /// Filters the voices' input and adds their output to the sums. Returns true if input exceeded
    /// kMostHeard. The inputs and sums of several blocks lie one block after the other.
    bool Add(std::span<RunningVoice* const> voices, std::span<const Ear> ears,
             std::size_t blocks = 1) noexcept;

  private:
    static float Between(float before, const Ramp<float>& after,
                         const Ramp<float>& arrives) noexcept {
        const float end = after.Now();
        return arrives.Moves() ? before + (end - before) * arrives.Now() : end;
    }
    /// Returns the target volume of channel i.
    float Wanted(std::size_t i) const noexcept { return playing.given ? float(volumes[i]) : 1.0F; }
    std::size_t Group(const RunningVoice& v) const noexcept;
    /// Returns true if no other voice has the scaling of this one.
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
