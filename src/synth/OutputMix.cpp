// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/OutputMix.h"

#include "synth/BlockLoops.h"
#include "synth/Voice.h"

#include <algorithm>

namespace vexa {

void OutputMix::Restart() noexcept {
    channels.fill(Ramp<float>());
    level.Set(1);
    decibels = 0;
    count = 0;
    begun = false;
}

void OutputMix::Begin(const Times& times, std::size_t offset, std::size_t newCount) noexcept {
    // Until here the ramps have the volumes of the previous block.
    for (Ramp<float>& channel : channels)
        channel.Pass(count);
    level.Pass(count);
    count = newCount;
    fadeLength = times.fade;
    for (std::size_t i = 0; i < channels.size(); i++)
        channels[i].Aim(Wanted(i), begun ? times.channel : 0, offset);
    float wanted = level.End();
    if (playing.volume != decibels) {
        decibels = playing.volume;
        wanted = static_cast<float>(LevelOf(double(decibels)));
    }
    level.Aim(wanted, begun ? times.sum : 0, offset);
    begun = true;
}

void OutputMix::Write(const float* sum, float gain, float* out, std::size_t length) const noexcept {
    Ramp<float> now = level;
    const float factor = gain * now.Now();
    if (now.Moves()) {
        for (std::size_t i = 0; i < length; i++, now.Pass(1))
            out[i] = sum[i] * (gain * now.Now());
    } else {
        for (std::size_t i = 0; i < length; i++)
            out[i] = sum[i] * factor;
    }
}

bool OutputMix::Stays() const noexcept {
    bool stays = playing.volume == decibels && !level.Varies();
    for (std::size_t i = 0; i < channels.size(); i++)
        stays = stays && channels[i].StaysAt(Wanted(i));
    return stays;
}

/// Voices of one group have equal scaling; those of group 0 have none.
std::size_t OutputMix::Group(const RunningVoice& v) const noexcept {
    const Ramp<float>& channel = channels[v.channel];
    return channel.Varies() || channel.Now() != 1 ? 1 + v.channel : 0;
}

void OutputMix::Sort(std::span<RunningVoice*> voices) const noexcept {
    const auto place = [this](const RunningVoice& v) {
        return IsAlone(v) ? channels.size() + 1 : Group(v);
    };
    for (std::size_t i = 1; i < voices.size(); i++) {
        for (std::size_t k = i; k > 0 && place(*voices[k]) < place(*voices[k - 1]); k--)
            std::swap(voices[k], voices[k - 1]);
    }
}

void OutputMix::AddResting(const RunningVoice& v, float out, std::size_t side,
                           float* sum) const noexcept {
    Ramp<float> volume = channels[v.channel], gain = v.gains[side];
    for (std::size_t i = 0; i < count; i++) {
        sum[i] += out * volume.Now() * gain.Now();
        volume.Pass(1);
        gain.Pass(1);
    }
}

bool OutputMix::Add(std::span<RunningVoice* const> voices, std::span<const Ear> ears,
                    std::size_t blocks) noexcept {
    bool beyond = false;
    std::array<LowCutFilter*, kVoiceSlots> filters;
    const std::size_t stride = voices.size() * count;
    for (std::size_t k = 0; k < voices.size();) {
        RunningVoice& first = *voices[k];
        const std::size_t group = Group(first);
        const bool alone = IsAlone(first);
        std::size_t number = 1;
        while (k + number < voices.size() && !alone && !IsAlone(*voices[k + number]) &&
               Group(*voices[k + number]) == group)
            number++;
        const std::size_t left = first.left;
        const Ramp<float> begin = first.arrives;
        for (const Ear& ear : ears) {
            for (std::size_t n = 0; n < number; n++)
                filters[n] = &(voices[k + n]->*ear.filter);
            const float* const samples = ear.samples + k * count;
            if (group == 0 && !alone) {
                beyond |=
                    Loops().LowCut(filters.data(), samples, number, count, ear.sum, blocks, stride);
                continue;
            }
            Ramp<float> volume = channels[first.channel];
            Ramp<float> gain = first.gains[ear.side];
            first.left = left;
            first.arrives = begin;
            for (std::size_t block = 0; block < blocks; block++) {
                alignas(64) std::array<float, kRoom> part{};
                beyond |= Loops().LowCut(filters.data(), samples + block * stride, number, count,
                                         part.data(), 1, 0);
                for (std::size_t i = 0; i < count; i++) {
                    ear.sum[block * count + i] += part[i] *
                                                  Between(first.before, volume, first.arrives) *
                                                  Fade(first) * gain.Now();
                    volume.Pass(1);
                    gain.Pass(1);
                    first.arrives.Pass(1);
                    first.left -= first.ends && first.left > 0 ? 1 : 0;
                }
            }
        }
        if (first.scaled) {
            for (Ramp<float>& gain : first.gains)
                gain.Pass(count);
        }
        k += number;
    }
    return beyond;
}

} // namespace vexa
