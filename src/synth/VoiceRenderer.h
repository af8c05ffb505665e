// SPDX-License-Identifier: GPL-3.0-or-later
// Turns the voice table into samples.
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
/// It keeps the running state of every voice to itself and shows it in the voice table after each
/// Render; notes, releases and coefficients that other threads write are taken up at the start of
/// each block of kBlock samples, or of up to kMostCells such blocks where a Render asks for so many
/// and nothing has changed. Whoever must have an event at its exact sample ends a Render there.
class VoiceRenderer {
  public:
    /// The gain that all programs play with unless told otherwise; it leaves room for a chord.
    static constexpr float kUsualGain = 0.25F;
    /// The samples that are computed in one go.
    static constexpr std::size_t kBlock = kMostSamples;

    /// Makes a renderer with gain 0, dummyfunction and 44100 samples per second. The records are
    /// shared and outlive it. It allocates.
    VoiceRenderer(const ControllerTable& controllers, Macros& macros, const sound_param& parameters,
                  const Playing& playing, const ChannelVolumes& volumes, VoiceTable& voices);

    /// Writes the next `count` samples of the sum of all voices, times the gain, unclipped.
    /// Media thread: no allocation, lock, wait or system call.
    VEXA_REALTIME void Render(float* buffer, std::size_t count) noexcept {
        Render(buffer, nullptr, count);
    }
    /// Renders for two ears, which are as far apart as the sound says. Where `right` is null, or
    /// the spread is 0, both hear what one hears, and it costs as much.
    VEXA_REALTIME void Render(float* left, float* right, std::size_t count) noexcept;

    /// True where f was so large that it was bounded (kMostHeard). Any thread.
    bool HasBounded() const { return bounded; }

    /// Sets the factor on the sum, 0..1; anything else is ignored. Any thread.
    void SetGain(float next) noexcept;

    /// Sets the function from the next sample on. The one before is let go when no Render that may
    /// have begun before this call is running. Window thread.
    void SetFunction(const PlaneFunction& next) { function.Publish(next); }

    /// Says that the function that is set next comes with other coefficients and envelopes, and
    /// that all of them are there, if there were any. An orbit of one sound may lead far up another
    /// one's terrain: in between nothing is heard, and nothing glides from the one to the other.
    /// Window thread.
    void BeginReplacing() noexcept { replacing = replacing | 1U; }
    void EndReplacing() noexcept { replacing = replacing + (replacing & 1U); }

    /// Sets whether notes that sound go on from where they are when the sound becomes another one
    /// at once: what would be a step is an offset then, which their low-cut filters take away. At
    /// first they do not. Any thread.
    void SetJoins(bool whether) noexcept { joins = whether; }

    /// Forgets all notes at once, and what lingers of them; those that the table has still begin
    /// anew. It must not be called while rendering.
    VEXA_REALTIME void Clear() noexcept;

    /// Sets the samples per second, of which one in `oversampling` is heard: the low-cut filters
    /// keep their corner. Voices that sound go on. It must not be called while rendering.
    VEXA_REALTIME void SetSampleRate(double rate, int oversampling = 1) noexcept;
    /// Returns what the sound wants `oversampling` to be. Any thread.
    VEXA_REALTIME int Oversampling() const noexcept { return playing.Oversampling(); }

  private:
    struct Block;
    /// What one ear hears over several cells: the places of the voices, the values there, and their
    /// sum. It is too large for the stack of a host's thread.
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
    /// Returns the samples in that time, at least one.
    VEXA_REALTIME std::size_t SamplesIn(double seconds) const noexcept;
    /// True where a sound takes another's place, or has done so since the last Render began.
    VEXA_REALTIME bool IsReplaced() const noexcept {
        return replaced % 2 != 0 || replaced != replacing;
    }
    VEXA_REALTIME bool RenderBlock(const PlaneFunction& f, Block& block, float* left, float* right,
                                   std::size_t count) noexcept;
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
    VEXA_REALTIME void Watch(RunningVoice& running, std::span<const float> samples,
                             bool cellEnds) const noexcept;
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
    /// The right ear has filters of its own.
    bool apart = false;
    VoiceTable& voices;
    kits::Shared<float> gain{0};
    kits::Published<PlaneFunction> function{dummyfunction};
    double sampleRate = 44100;
    /// The rate that the low-cut filters' constants are computed for.
    double filterRate;
    /// How many samples were rendered since the beginning of the present cell (Oscillator).
    std::size_t offset = 0;
    kits::Shared<bool> bounded{false};
    kits::Shared<bool> joins{false};
    /// The sound on which the voices that rest depend, as it was in the last block.
    VoiceMotion::Sound sound{};
    const PlaneSource* heard = nullptr;
    /// How often a sound has taken the place of another, times two; odd while one does. And the
    /// count when the last Render began.
    kits::Shared<uint32> replacing{0};
    uint32 replaced = 0;
    kits::Reader reader;
};

} // namespace vexa
