// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/OutputMix.h"

#include "synth/BlockLoops.h"
#include "synth/Voice.h"

#include <algorithm>

namespace vexa {

void OutputMix::Begin(std::size_t ramp, std::size_t fade, std::size_t offset,
                      std::size_t newCount) noexcept {
    // Of the block before.
    for (Ramp<float>& channel : channels)
        channel.Pass(count);
    count = newCount;
    fadeLength = fade;
    for (std::size_t i = 0; i < channels.size(); i++)
        channels[i].Aim(Wanted(i), begun ? ramp : 0, offset);
    begun = true;
    if (playing.volume != decibels) {
        decibels = playing.volume;
        level = static_cast<float>(LevelOf(double(decibels)));
    }
}

bool OutputMix::Stays() const noexcept {
    bool stays = playing.volume == decibels;
    for (std::size_t i = 0; i < channels.size(); i++)
        stays = stays && channels[i].StaysAt(Wanted(i));
    return stays;
}

/// Voices of one group are scaled alike; those of group 0 not at all.
std::size_t OutputMix::Group(const RunningVoice& v) const noexcept {
    const Ramp<float>& channel = channels[v.channel];
    return channel.Varies() || channel.Now() != 1 ? 1 + v.channel : 0;
}

void OutputMix::Sort(std::span<RunningVoice*> voices) const noexcept {
    const auto place = [this](const RunningVoice& v) {
        return v.ends ? channels.size() + 1 : Group(v);
    };
    for (std::size_t i = 1; i < voices.size(); i++) {
        for (std::size_t k = i; k > 0 && place(*voices[k]) < place(*voices[k - 1]); k--)
            std::swap(voices[k], voices[k - 1]);
    }
}

bool OutputMix::Add(std::span<RunningVoice* const> voices, std::span<const Ear> ears) noexcept {
    bool beyond = false;
    std::array<LowCutFilter*, kVoiceSlots> filters;
    alignas(64) std::array<float, kRoom> part;
    for (std::size_t k = 0; k < voices.size();) {
        RunningVoice& first = *voices[k];
        const std::size_t group = Group(first);
        std::size_t number = 1;
        while (k + number < voices.size() && !first.ends && !voices[k + number]->ends &&
               Group(*voices[k + number]) == group)
            number++;
        const bool plain = group == 0 && !first.ends;
        const std::size_t left = first.left;
        for (const Ear& ear : ears) {
            for (std::size_t n = 0; n < number; n++)
                filters[n] = &(voices[k + n]->*ear.filter);
            if (!plain)
                part.fill(0);
            beyond |= Loops().LowCut(filters.data(), ear.samples + k * count, number, count,
                                     plain ? ear.sum : part.data());
            Ramp<float> volume = channels[first.channel];
            first.left = left;
            for (std::size_t i = 0; i < count && !plain; i++) {
                ear.sum[i] += part[i] * volume.Now() * Fade(first);
                volume.Pass(1);
                first.left -= first.ends && first.left > 0 ? 1 : 0;
            }
        }
        k += number;
    }
    return beyond;
}

} // namespace vexa
