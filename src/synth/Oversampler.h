// SPDX-License-Identifier: GPL-3.0-or-later
// An oversampler gives frames at one rate of a renderer that runs at a multiple of it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Decimator.h"
#include "synth/Ramp.h"
#include "synth/VoiceRenderer.h"

#include <array>
#include <cstddef>
#include <vector>

namespace vexa {

/// Renders at the multiple of a rate that the sound asks for and takes out what the rate cannot
/// hold, with a filter that delays what is heard by half its length; at the rate itself nothing is
/// changed or delayed. A sound may ask for another multiple at any time: what sounds goes on
/// without a click. Media thread, but for its construction, which allocates.
class Oversampler {
  public:
    /// The renderer outlives it, and nobody else renders meanwhile. `half` is the filter's, in
    /// frames; 32 are 0.7 ms at 44100 Hz.
    explicit Oversampler(VoiceRenderer& renderer, std::size_t half = DecimationFilter::kLive)
        : renderer(renderer), half(half), filters{{{2, half}, {4, half}, {8, half}, {16, half}}} {}

    /// Sets the frames per second. What has been rendered so far is forgotten. It must not be
    /// called while rendering.
    VEXA_REALTIME void SetFrameRate(double rate);

    /// Returns the frames by which what the next Render renders is heard later: half the filter or
    /// 0.
    VEXA_REALTIME std::size_t Delay() const noexcept {
        return renderer.Oversampling() > 1 ? half : 0;
    }

    /// Renders as VoiceRenderer::Render does. Real-time safe.
    VEXA_REALTIME void Render(float* left, float* right, std::size_t count) noexcept;

  private:
    static constexpr std::size_t kMostFactor = 16;
    /// The frames that are rendered at a time.
    static constexpr std::size_t kPiece = 64;
    /// What the renderer has given: the frames that the filter still needs, and then the next
    /// piece.
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
    /// The filter of `factor`, where that is not 1.
    const DecimationFilter* filter = nullptr;
    std::array<Line, 2> lines{NewLine(), NewLine()};
    /// A line as it was before the factor changed.
    Line before = NewLine();
    /// The share of the filtered frames in the output, 0..1; the rest are frames that are not
    /// delayed.
    Ramp<float> filtered;
    bool begun = false;
};

} // namespace vexa
