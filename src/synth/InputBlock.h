// What a plane function hears of all notes over a block.
#pragma once

#include "synth/BlockLoops.h"
#include "synth/Macros.h"
#include "synth/PlaneFunction.h"
#include "synth/RunningVoice.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"

#include <array>
#include <cstddef>
#include <memory>
#include <span>

namespace vexa {

/// Where one macro is on its way: a straight line in time, begun anew whenever the macro is set.
/// The first moment finds it where it was last set to.
class MacroRamp {
  public:
    /// Writes the macro at `count` moments, `rate` a second, beginning now, and goes on. It reaches
    /// what the macro was last set to exactly, 10 ms after that.
    void Advance(float target, double rate, float* values, std::size_t count) noexcept;
    /// At the moment after those written so far.
    float Now() const noexcept;

  private:
    bool begun = false;
    float from = kInitialMacro, to = kInitialMacro;
    /// Moments since the macro was set, no more than `length`.
    std::size_t done = 0, length = 0;
};

/// The values of a function's inputs at the points of all voices. Media thread, but for its
/// construction, which allocates.
class InputBlock {
  public:
    explicit InputBlock(Macros& macros) : macros(macros), space(std::make_unique<Space>()) {}

    /// The macros over the next `count` <= kMostSamples moments, whether they are used or not.
    void Advance(double rate, std::size_t count) noexcept;

    /// The arrays that f.Evaluate expects for the points of the block that was advanced over: those
    /// of voice k are k * count to (k + 1) * count - 1. Each voice's age grows by `count`.
    const float* const* Fill(const PlaneSource& f, std::span<RunningVoice* const> voices,
                             const ControllerTable& controllers, double dt,
                             std::size_t count) noexcept;

  private:
    struct Space {
        alignas(64) std::array<std::array<float, kMostSamples>, kMacros> macros;
        alignas(64) std::array<std::array<float, kVoiceSlots * kMostSamples>, kMostInputs> values;
    };

    Macros& macros;
    std::array<MacroRamp, kMacros> ramps;
    std::unique_ptr<Space> space;
    std::array<const float*, kMostInputs> arrays{};
};

} // namespace vexa
