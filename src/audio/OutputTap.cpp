// SPDX-License-Identifier: GPL-3.0-or-later
#include "audio/OutputTap.h"

namespace vexa {

void OutputTap::Put(const float* buffer, std::size_t count, std::size_t channels) noexcept {
    if (listeners == 0)
        return;
    const uint64 from = ended;
    begun = from + count;
    for (std::size_t i = 0; i < count; i++) {
        const float* frame = buffer + i * channels;
        frames[(from + i) & (kFrames - 1)] = OutputFrame{frame[0], frame[channels - 1]};
    }
    ended = from + count;
}

bool OutputTap::Listener::Copy(uint64 from, std::span<OutputFrame> into) const noexcept {
    if (into.size() > kFrames || from + into.size() > tap.ended)
        return false;
    for (std::size_t i = 0; i < into.size(); i++)
        into[i] = tap.frames[(from + i) & (kFrames - 1)];
    return tap.begun <= from + kFrames;
}

} // namespace vexa
