// SPDX-License-Identifier: GPL-3.0-or-later
// The values of a plane function's inputs other than x and y, for all notes over a block.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/BlockLoops.h"
#include "synth/Macros.h"
#include "synth/PlaneFunction.h"
#include "synth/RunningVoice.h"
#include "synth/SoundParam.h"
#include "synth/Voice.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <span>

namespace vexa {

/// Computes the function's inputs at the points of all voices. Media thread, except for the
/// construction, which allocates.
class VEXA_REALTIME InputBlock {
  public:
    explicit InputBlock(Macros& macros) : macros(macros), space(std::make_unique<Space>()) {}

    /// Forgets the past: the next block begins with the values that are set then.
    void Restart() noexcept;

    /// Returns true if all macros, controllers and the key that the voice uses have reached their
    /// targets.
    bool IsSteady(const PlaneSource& f, const RunningVoice& v) const noexcept;
    /// Returns true if the target of a macro, a controller or the key that f uses differs from the
    /// voice's present target.
    bool IsAskedOf(const PlaneSource& f, const RunningVoice& v, const ControllerTable& controllers,
                   const OwnControllers& own) const noexcept;

    /// Moves the macros over the next `count` samples at `rate` samples per second, whether f uses
    /// them or not. Each reaches the value last set within 10 ms, or `smooth` samples if that is
    /// longer; on the first call it starts there. `offset` is that of VoiceMotion. Publishes the
    /// values at the block's beginning, for notes that begin.
    void Advance(double rate, std::size_t smooth, std::size_t offset, std::size_t count) noexcept;
    /// Publishes the macros' values after the block, or their initial values if there was no block
    /// yet.
    void ShowMacros() noexcept;

    /// Returns the arrays that f.Evaluate expects for the points of the block of the last Advance.
    /// The indices of voice k are k * count to (k + 1) * count - 1, and count <= kMostSamples
    /// unless f has no inputs. Increases each voice's age by `count`. Controllers reach their
    /// targets within the smooth samples of Advance, a key within those of its voice, and a note's
    /// own value in the time of the common value that it replaces. A new note takes a macro at its
    /// common present value and all other inputs at their targets.
    const float* const* Fill(const PlaneSource& f, std::span<RunningVoice* const> voices,
                             const ControllerTable& controllers, const OwnControllers& own,
                             double dt, std::size_t count) noexcept;

    /// Returns true if the arrays of the last Fill hold for the following blocks too, as long as no
    /// target changes: all ramps have ended, and f does not use the time.
    bool Stays(const PlaneSource& f, std::span<RunningVoice* const> voices) const noexcept;
    /// Advances by `count` samples in place of Advance and Fill if Stays is true.
    static void GoOn(std::span<RunningVoice* const> voices, std::size_t count) noexcept;

  private:
    /// The value of an input for a note that begins now, and the samples in which the other notes
    /// reach its target.
    struct Common {
        Ramp<float> value;
        std::size_t length;
    };
    /// Returns the common target of an input that is a macro or a controller.
    float CommonOf(FunctionInput input, const ControllerTable& controllers) const noexcept;
    /// Returns a voice's target of an input that is a macro, a controller or the key: the common
    /// one, unless the voice has its own.
    float WantedOf(FunctionInput input, const RunningVoice& v, float common,
                   const OwnControllers& own) const noexcept;
    /// Writes the values of that input for a voice.
    void Write(const Common& common, float wanted, Ramp<float>& heard, const RunningVoice& v,
               float* to, std::size_t count) noexcept;
    /// Writes `count` values of the ramp from here on.
    static void Write(Ramp<float> ramp, float* to, std::size_t count) noexcept {
        if (!ramp.Moves()) {
            std::fill_n(to, count, ramp.Now());
            return;
        }
        for (std::size_t i = 0; i < count; i++, ramp.Pass(1))
            to[i] = ramp.Now();
    }

    struct Space {
        alignas(64) std::array<std::array<float, kVoiceSlots * kMostSamples>, kMostInputs> values;
    };

    Macros& macros;
    /// The macros' ramps after the block and at its beginning.
    std::array<Ramp<float>, kMacros> ramps, starts;
    bool begun = false;
    /// The ramp lengths, in samples, of a controller and of a macro, and the block's offset in its
    /// cell.
    std::size_t smooth = 0, length = 0, offset = 0;
    /// The source of the last Fill.
    const PlaneSource* source = nullptr;
    /// True if the Fill before had the same source.
    bool sameSource = false;
    std::unique_ptr<Space> space;
    std::array<const float*, kMostInputs> arrays{};
};

} // namespace vexa
