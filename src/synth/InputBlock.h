// SPDX-License-Identifier: GPL-3.0-or-later
// An input block holds what a plane function hears of all notes over a block, besides x and y.
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

/// The values of a function's inputs at the points of all voices. Media thread, but for its
/// construction, which allocates.
class VEXA_REALTIME InputBlock {
  public:
    explicit InputBlock(Macros& macros) : macros(macros), space(std::make_unique<Space>()) {}

    /// True where all that the voice hears of macros, controllers and its key is where it is
    /// wanted.
    bool IsSteady(const PlaneSource& f, const RunningVoice& v) const noexcept;
    /// True where a macro, a controller or the key that f hears is wanted elsewhere than the voice
    /// has it.
    bool IsAskedOf(const PlaneSource& f, const RunningVoice& v, const ControllerTable& controllers,
                   const OwnControllers& own) const noexcept;

    /// Moves the macros over the next `count` moments, `rate` a second, whether they are used or
    /// not. Each goes to what it was last set to within 10 ms, or `smooth` samples if that is
    /// longer; the first moment of all finds it there. `offset` is that of VoiceMotion. They show
    /// where they are at the beginning, for notes that begin.
    void Advance(double rate, std::size_t smooth, std::size_t offset, std::size_t count) noexcept;
    /// Lets them show where they are behind the block, or will begin where there was none so far.
    void ShowMacros() noexcept;

    /// The arrays that f.Evaluate expects for the points of the block that was advanced over: those
    /// of voice k are k * count to (k + 1) * count - 1, and count <= kMostSamples unless f has no
    /// inputs. Each voice's age grows by `count`.
    /// Controllers go where they are wanted within the smooth samples of Advance, a key within
    /// those of its voice, and what a note has of its own as what it stands for. A note begins with
    /// a macro as far as all have it, and with all else where it is wanted.
    const float* const* Fill(const PlaneSource& f, std::span<RunningVoice* const> voices,
                             const ControllerTable& controllers, const OwnControllers& own,
                             double dt, std::size_t count) noexcept;

    /// True where the arrays of the last Fill are those of the blocks to come as well, as long as
    /// nothing else is wanted: all hands are still, and f does not hear the time.
    bool Stays(const PlaneSource& f, std::span<RunningVoice* const> voices) const noexcept;
    /// Goes on by `count` moments, in place of Advance and Fill, where that is so.
    static void GoOn(std::span<RunningVoice* const> voices, std::size_t count) noexcept;

  private:
    /// An input as a note that begins now has it, and the samples in which the others get where it
    /// is wanted.
    struct Common {
        Ramp<float> value;
        std::size_t length;
    };
    /// Returns where all want an input that is a macro or a controller.
    float CommonOf(FunctionInput input, const ControllerTable& controllers) const noexcept;
    /// Returns where a voice wants an input that is a macro, a controller or the key: where all
    /// want it, unless it has something of its own.
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
    /// The macros on their way, as they are behind the block, and as they were at its beginning.
    std::array<Ramp<float>, kMacros> ramps, starts;
    bool begun = false;
    /// The samples in which a controller and in which a macro gets where it is wanted, and the
    /// block's offset in its cell.
    std::size_t smooth = 0, length = 0, offset = 0;
    /// The source of the last Fill.
    const PlaneSource* source = nullptr;
    /// Whether it was that of the one before too.
    bool sameSource = false;
    std::unique_ptr<Space> space;
    std::array<const float*, kMostInputs> arrays{};
};

} // namespace vexa
