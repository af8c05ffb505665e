// Moves the voices' points along their orbits.
#pragma once

#include "synth/RunningVoice.h"
#include "synth/SoundParam.h"

#include <cstddef>
#include <span>

namespace vexa {

/// What the motion of a block depends on.
struct MotionBlock {
    const sound_param& parameters;
    const ControllerTable& controllers;
    /// Seconds per sample.
    double dt;
    /// Samples since the beginning of the cell (Oscillator) in which the block lies, and samples
    /// that it has; offset + count <= kMostSamples.
    std::size_t offset, count;
};

/// Voices that are moved at a time, side by side.
constexpr std::size_t kMovedTogether = 4;

/// Moves up to kMovedTogether voices: writes the places of voice k to x[k * count + i] and
/// y[k * count + i], and up to kSlack floats beyond, and advances the voices. Media thread, inside
/// a section of a reader of the envelopes.
void Move(std::span<RunningVoice* const> voices, const MotionBlock& block, float* x,
          float* y) noexcept;

} // namespace vexa
