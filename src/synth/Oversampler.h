// SPDX-License-Identifier: GPL-3.0-or-later
// The oversampler produces frames at one rate from a renderer that runs at a multiple of it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Decimator.h"
#include "synth/Ramp.h"
#include "synth/VoiceRenderer.h"

#include <array>
#include <cstddef>
#include <vector>

namespace vexa {

/// Renders at the multiple of the output rate that the sound asks for and decimates the result,
/// with a filter that delays the output by half its length. At factor 1 nothing is changed or
/// delayed. The factor may change at any time; sounding notes continue without a click. Media
/// thread, except for the construction, which allocates.
class Oversampler {
  public:
    /// The renderer must outlive this object, and nothing else may render with it. `half` is the
    /// filter's half length in frames; 32 are 0.7 ms at 44100 Hz.
    explicit Oversampler(VoiceRenderer& renderer, std::size_t half = DecimationFilter::kLive)
        : renderer(renderer), half(half), filters{{{2, half}, {4, half}, {8, half}, {16, half}}} {}

    /// Sets the output's sample rate and discards the frames rendered so far. Must not be called
    /// while rendering.
    VEXA_REALTIME void SetFrameRate(double rate);

    /// Returns the delay of the next Render's output in frames: half the filter's length, or 0.
    VEXA_REALTIME std::size_t Delay() const noexcept {
        return renderer.Oversampling() > 1 ? half : 0;
    }

    /// Renders as VoiceRenderer::Render does. Real-time safe.
    VEXA_REALTIME void Render(float* left, float* right, std::size_t count) noexcept;

  private:
    static constexpr std::size_t kMostFactor = 16;
    /// The number of output frames that are rendered at a time.
    static constexpr std::size_t kPiece = 64;
    /// The renderer's output: the frames that the filter still needs, followed by the next piece.
    using Line = std::vector<float>;

    VEXA_REALTIME std::size_t Held() const noexcept { return 2 * half * factor; }
    Line NewLine() const { return Line((2 * half + kPiece + 1) * kMostFactor); }
    VEXA_REALTIME void TakeFactor(std::size_t next) noexcept;
    VEXA_REALTIME void Give(const Line& line, float* out, std::size_t count) const noexcept;

    VoiceRenderer& renderer;
    const std::size_t half;
    const std::array<DecimationFilter, 4> filters;
    double frameRate = 44100;
    std::size_t factor = 1;
    /// The filter for `factor`; null if that is 1.
    const DecimationFilter* filter = nullptr;
    std::array<Line, 2> lines{NewLine(), NewLine()};
    /// A copy of a line from before the factor changed.
    Line before = NewLine();
    /// The share of the filtered frames in the output, 0..1; the rest are undelayed frames.
    Ramp<float> filtered;
    bool begun = false;
};

} // namespace vexa
