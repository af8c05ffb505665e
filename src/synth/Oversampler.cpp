// SPDX-License-Identifier: GPL-3.0-or-later
#include "synth/Oversampler.h"

#include <algorithm>
#include <bit>
#include <span>

namespace vexa {

namespace {

/// The time, in seconds, in which the delay fades in or out.
constexpr double kDelaySeconds = 0.01;

/// Returns true if all samples are 0. The bits are combined without a branch, many at a time.
VEXA_REALTIME bool IsSilent(std::span<const float> samples) noexcept {
    if (samples.front() != 0 || samples.back() != 0)
        return false;
    uint32 bits = 0;
    for (const float sample : samples)
        bits |= std::bit_cast<uint32>(sample) << 1;
    return bits == 0;
}

} // namespace

void Oversampler::SetFrameRate(double rate) {
    frameRate = rate;
    begun = false;
    filtered.Set(0);
    for (Line& line : lines)
        std::ranges::fill(line, 0.0F);
    renderer.SetSampleRate(rate * static_cast<double>(factor), static_cast<int>(factor));
}

void Oversampler::Render(float* left, float* right, std::size_t count) noexcept {
    TakeFactor(static_cast<std::size_t>(renderer.Oversampling()));
    const std::size_t channels = right ? 2 : 1;
    for (std::size_t done = 0; done < count;) {
        const std::size_t n = std::min(kPiece, count - done);
        float* const next = lines[0].data() + Held();
        float* const nextRight = lines[1].data() + Held();
        renderer.Render(next, right ? nextRight : nullptr, n * factor);
        Give(lines[0], left + done, n);
        // If both ears hear the same, the filter runs once.
        if (right && std::equal(lines[0].data(), next + n * factor, lines[1].data()))
            std::copy_n(left + done, n, right + done);
        else if (right)
            Give(lines[1], right + done, n);
        for (Line& line : std::span(lines.data(), channels))
            std::copy_n(line.data() + n * factor, Held(), line.data());
        filtered.Pass(n);
        done += n;
    }
}

/// Converts the held frames to the new rate. Linear interpolation suffices, as they are heard for
/// only a millisecond or two.
void Oversampler::TakeFactor(std::size_t next) noexcept {
    filtered.Aim(next > 1 ? 1.0F : 0.0F,
                 begun ? static_cast<std::size_t>(frameRate * kDelaySeconds) : 0, 0);
    begun = true;
    if (next == factor)
        return;
    for (Line& line : lines) {
        std::copy_n(line.data(), Held(), before.data());
        const std::size_t last = Held() - 1;
        for (std::size_t i = 0; i < 2 * half * next; i++) {
            const std::size_t at = i * factor / next;
            const float part = static_cast<float>(i * factor % next) / static_cast<float>(next);
            line[i] = before[at] + (before[std::min(at + 1, last)] - before[at]) * part;
        }
    }
    factor = next;
    filter = next > 1 ? &filters[static_cast<std::size_t>(std::countr_zero(next)) - 1] : nullptr;
    renderer.SetSampleRate(frameRate * static_cast<double>(factor), static_cast<int>(factor));
}

void Oversampler::Give(const Line& line, float* out, std::size_t count) const noexcept {
    // Most of the time only silence is rendered, and its output is silence.
    if (IsSilent({line.data(), Held() + count * factor})) {
        std::fill_n(out, count, 0.0F);
        return;
    }
    const bool steady = !filtered.Moves();
    // The delayed samples.
    if (!steady || filtered.Now() != 0) {
        if (filter)
            filter->Run(line.data(), out, count);
        else
            std::copy_n(&line[half], count, out);
    }
    if (steady && filtered.Now() != 0)
        return;
    Ramp<float> ramp = filtered;
    for (std::size_t i = 0; i < count; i++, ramp.Pass(1)) {
        const float direct = line[Held() + i * factor];
        out[i] = steady ? direct : direct + (out[i] - direct) * ramp.Now();
    }
}

} // namespace vexa
