// SPDX-License-Identifier: GPL-3.0-or-later
// Renders the notes of the voice table as samples.
#pragma once

#include "kits/support/Published.h"
#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "synth/Ears.h"
#include "synth/InputBlock.h"
#include "synth/OutputMix.h"
#include "synth/PlaneFunction.h"
#include "synth/Playing.h"
#include "synth/RunningVoice.h"
#include "synth/SoundParam.h"
#include "synth/SoundRecords.h"
#include "synth/Voice.h"
#include "synth/VoiceMotion.h"

#include <array>
#include <cstddef>
#include <memory>
#include <span>

namespace vexa {

/// Moves each sounding voice's point along its orbit, reads the plane function there, passes it
/// through the voice's low-cut filter and sums the voices.
///
/// The running state of every voice is private; each Render publishes it in the voice table at its
/// end. Notes, releases and coefficients from other threads take effect at the start of each block
/// of kBlock samples, or of up to kMostCells such blocks if a Render is that long and nothing has
/// changed. A caller that needs an event at its exact sample ends a Render there.
class VoiceRenderer {
  public:
    /// The default gain of all programs; it leaves headroom for a chord.
    static constexpr float kUsualGain = 0.25F;
    /// The number of samples in a block.
    static constexpr std::size_t kBlock = kMostSamples;

    /// Makes a renderer with gain 0, dummyfunction and 44100 samples per second. The records are
    /// shared and must outlive the renderer. Allocates.
    explicit VoiceRenderer(SoundRecords& records);

    /// Writes the next `count` samples of the sum of all voices, times the gain, unclipped.
    /// Media thread: no allocation, lock, wait or system call.
    VEXA_REALTIME void Render(float* buffer, std::size_t count) noexcept {
        Render(buffer, nullptr, count);
    }
    /// Renders for two ears, at the distance that the sound's spread sets. If `right` is null or
    /// the spread is 0, both ears get the signal of one, at the cost of one.
    VEXA_REALTIME void Render(float* left, float* right, std::size_t count) noexcept;

    /// Returns true if a value of f exceeded kMostHeard and was clamped. Any thread.
    bool HasBounded() const { return bounded; }

    /// Sets the gain of the sum, 0..1; other values are ignored. Any thread.
    void SetGain(float next) noexcept;

    /// Sets the function from the next sample on. The previous one is released once no Render that
    /// may have begun before this call is running. Window thread.
    void SetFunction(const PlaneFunction& next) { function.Publish(next); }

    /// Marks the replacement of a sound: BeginReplacing() announces that the next function comes
    /// with other coefficients and envelopes, EndReplacing() says that all of them are set.
    /// EndReplacing() without a replacement has no effect. The orbit of one sound may reach extreme
    /// values of another sound's terrain: in between the output is silent, and no value glides from
    /// one sound to the other. Sounding notes continue from their last output, as after SetJoins,
    /// and round the centre where notes of the new sound begin. Window thread.
    void BeginReplacing() noexcept { replacing = replacing | 1U; }
    void EndReplacing() noexcept { replacing = replacing + (replacing & 1U); }

    /// Sets whether sounding notes continue from their current output when the sound is replaced at
    /// once: the step becomes an offset, which their low-cut filters remove. Off by default. Any
    /// thread.
    void SetJoins(bool whether) noexcept { joins = whether; }

    /// Drops all notes and their tails at once; notes that are still in the table begin again.
    /// Volumes, macros and ears continue from the values that are then set, without a ramp. Must
    /// not be called while rendering.
    VEXA_REALTIME void Clear() noexcept;

    /// Sets the sample rate, which is `oversampling` times the rate of the output. The oversampling
    /// leaves the low-cut filters' corner frequency unchanged. Sounding voices continue. Must not
    /// be called while rendering.
    VEXA_REALTIME void SetSampleRate(double rate, int oversampling = 1) noexcept;
    /// Returns the oversampling factor that the sound asks for. Any thread.
    VEXA_REALTIME int Oversampling() const noexcept { return playing.Oversampling(); }

  private:
    struct Block;
    /// One ear's data over several cells: the points of the voices, the function's values there,
    /// and their sum. It is too large for the stack of a host's thread.
    struct CellEar {
        alignas(64) std::array<float, kMostCells * kVoiceSlots * kBlock> x, y;
        alignas(64) std::array<float, kMostCells * kVoiceSlots * kBlock + kSlack> s;
        alignas(64) std::array<float, kCellRoom> sum;
    };

    VEXA_REALTIME void TakeUpChange(RunningVoice& running, const voice& slot,
                                    const PlaneSource& f) noexcept;
    VEXA_REALTIME void MoveTo(RunningVoice& running, std::size_t channel, bool silent) noexcept;
    VEXA_REALTIME void TakeUpHands(RunningVoice& running, const voice& slot) noexcept;
    VEXA_REALTIME std::size_t Smooth() const noexcept;
    VEXA_REALTIME void CutOff(RunningVoice& running) noexcept;
    /// Returns the number of samples in that time, at least one.
    VEXA_REALTIME std::size_t SamplesIn(double seconds) const noexcept;
    /// Returns true if a sound is being replaced, or has been since the last Render began.
    VEXA_REALTIME bool IsReplaced() const noexcept {
        return replaced % 2 != 0 || replaced != replacing;
    }
    VEXA_REALTIME bool RenderBlock(const PlaneFunction& f, Block& block, float* left, float* right,
                                   std::size_t count) noexcept;
    VEXA_REALTIME void Recentre(const OwnControllers& own) noexcept;
    VEXA_REALTIME void OpenEars(bool both, std::size_t count) noexcept;
    VEXA_REALTIME void CloseEars() noexcept;
    VEXA_REALTIME LowCutFilter LowCutFor(float freq) const noexcept;
    VEXA_REALTIME float StartOf(const RunningVoice& v, const PlaneSource& f,
                                double side) const noexcept;
    VEXA_REALTIME double BendOf(const RunningVoice& v, const voice& slot) const noexcept;
    VEXA_REALTIME bool Panned() const noexcept;
    VEXA_REALTIME bool GoesOn(const RunningVoice& running, const voice& slot) const noexcept;
    VEXA_REALTIME std::size_t RenderCells(const PlaneFunction& f, float* left, float* right,
                                          std::size_t most) noexcept;
    VEXA_REALTIME static bool HearsTime(const PlaneSource& f) noexcept;
    VEXA_REALTIME void Watch(RunningVoice& running, const float* left, const float* right,
                             std::size_t count, bool hearsTime, bool cellEnds) const noexcept;
    VEXA_REALTIME bool IsCalm(const RunningVoice& running) const noexcept;
    VEXA_REALTIME bool Lingers(const RunningVoice& running, bool hearsTime,
                               std::size_t cells) const noexcept;
    VEXA_REALTIME bool IsOver(const RunningVoice& running, float left, float right) const noexcept;
    VEXA_REALTIME bool WakeIfChanged(const VoiceMotion& motion, const PlaneFunction& f) noexcept;
    VEXA_REALTIME void Join(std::span<RunningVoice* const> sounding, const Block& block,
                            std::size_t count, float louder) const noexcept;
    VEXA_REALTIME void ShowProgress() noexcept;

    std::array<RunningVoice, kVoiceSlots> running;
    InputBlock inputs;
    const Macros& macros;
    const ControllerTable& controllers;
    const sound_param& parameters;
    const Playing& playing;
    OutputMix mix;
    Ears ears;
    std::unique_ptr<std::array<CellEar, 2>> cellEars{std::make_unique<std::array<CellEar, 2>>()};
    /// True if the right ear has its own filters.
    bool apart = false;
    VoiceTable& voices;
    kits::Shared<float> gain{0};
    kits::Published<PlaneFunction> function{dummyfunction};
    double sampleRate = 44100;
    /// The rate for which the low-cut filters' constants are computed.
    double filterRate;
    /// The number of samples rendered since the beginning of the current cell (Oscillator).
    std::size_t offset = 0;
    kits::Shared<bool> bounded{false};
    kits::Shared<bool> joins{false};
    /// The sound of the last block, on which the resting voices depend.
    VoiceMotion::Sound sound{};
    const PlaneSource* heard = nullptr;
    /// Twice the number of times that a sound was replaced, odd during a replacement; and its value
    /// when the last Render began.
    kits::Shared<uint32> replacing{0};
    uint32 replaced = 0;
    /// True until the first block of a sound that has replaced another is rendered.
    bool renewed = false;
    kits::Reader reader;
};

} // namespace vexa
