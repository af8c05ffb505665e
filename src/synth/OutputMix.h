// SPDX-License-Identifier: GPL-3.0-or-later
// From the voices' points to their sum: low-cut filters, volumes of channels, and fading ends.
#pragma once

#include "synth/Playing.h"
#include "synth/Ramp.h"
#include "synth/RunningVoice.h"

#include <array>
#include <cstddef>
#include <span>

namespace vexa {

/// Voices whose output is scaled alike are filtered side by side. Media thread.
class OutputMix {
  public:
    /// The records are shared and outlive this.
    OutputMix(const Playing& playing, const ChannelVolumes& volumes)
        : playing(playing), volumes(volumes) {}

    /// A block of `count` samples, `offset` after its cell. A volume gets where it is wanted within
    /// `ramp` samples, and an end takes `fade`.
    void Begin(std::size_t ramp, std::size_t fade, std::size_t offset, std::size_t count) noexcept;

    /// Whether a block that begins now leaves all volumes as they are.
    bool Stays() const noexcept;
    /// Begins blocks of `count` samples, in place of Begin, as long as it stays so.
    void GoOn(std::size_t newCount) noexcept { count = newCount; }

    /// The factor on the sum.
    float Level() const noexcept { return level; }
    /// The factor on a voice's output by its channel.
    float Volume(const RunningVoice& v) const noexcept { return channels[v.channel].Now(); }
    /// The factor on a voice's output by its end.
    float Fade(const RunningVoice& v) const noexcept {
        return v.ends ? static_cast<float>(v.left) / static_cast<float>(fadeLength) : 1.0F;
    }

    /// Puts voices that are scaled alike side by side. Without volumes and ends the order stays.
    void Sort(std::span<RunningVoice*> voices) const noexcept;

    /// What is heard with one ear: its filters, their input, samples[k * count + i] for voice k at
    /// moment i, and the sum of their output, with room as for BlockLoops.
    struct Ear {
        LowCutFilter RunningVoice::*filter;
        const float* samples;
        float* sum;
    };
    /// Filters the voices' input and adds their output to the sums. True where input was beyond
    /// kMostHeard.
    bool Add(std::span<RunningVoice* const> voices, std::span<const Ear> ears) noexcept;

  private:
    /// Where the volume of channel i is wanted.
    float Wanted(std::size_t i) const noexcept { return playing.given ? float(volumes[i]) : 1.0F; }
    std::size_t Group(const RunningVoice& v) const noexcept;

    const Playing& playing;
    const ChannelVolumes& volumes;
    std::array<Ramp<float>, 16> channels;
    float level = 1, decibels = 0;
    std::size_t fadeLength = 1, count = 0;
    bool begun = false;
};

} // namespace vexa
