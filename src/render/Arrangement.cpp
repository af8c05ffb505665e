// SPDX-License-Identifier: GPL-3.0-or-later
#include "render/Arrangement.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <numeric>
#include <utility>

namespace vexa {

Arrangement::Arrangement(std::list<Part> all) : parts(std::move(all)) {
    if (std::ranges::any_of(parts, &Part::HasNotes))
        parts.remove_if(std::not_fn(&Part::HasNotes));
    channels = std::ranges::max_element(parts, {}, &Part::Ears)->Ears();
}

double Arrangement::Seconds() const {
    return std::ranges::max_element(parts, {}, &Part::Seconds)->Seconds();
}

kits::Result<bool> Arrangement::Render(std::vector<float>& frames) {
    std::size_t common = SIZE_MAX, most = 0;
    for (Part& part : parts) {
        if (const kits::Result<void> rendered = part.Render(); !rendered)
            return rendered.Fault();
        most = std::max(most, part.Ready());
        if (!part.IsDone())
            common = std::min(common, part.Ready());
    }
    // Negative zero is the neutral element of addition: adding to it keeps the sign of a zero.
    frames.assign(std::min(common, most) * channels, -0.0F);
    for (Part& part : parts)
        part.MixInto(frames, channels);
    return std::ranges::any_of(parts, [](const Part& p) { return !p.IsDone() || p.Ready() > 0; });
}

bool Arrangement::HasBounded() {
    return std::ranges::any_of(parts, [](Part& part) { return part.HasBounded(); });
}

std::size_t Arrangement::FadedNotes() const {
    return std::accumulate(
        parts.begin(), parts.end(), std::size_t(0),
        [](std::size_t sum, const Part& part) { return sum + part.FadedNotes(); });
}

void Arrangement::Summarize(RenderSummary& summary) {
    summary.seconds = Seconds();
    for (Part& part : parts) {
        summary.notes += part.Notes();
        summary.mostVoices += static_cast<std::size_t>(part.MostVoices());
        summary.stolenVoices += static_cast<std::size_t>(part.StolenVoices());
    }
}

} // namespace vexa
