// SPDX-License-Identifier: GPL-3.0-or-later
// These values say how a sound is played: voices, bend, pedal and what else a player's hands and
// feet do to it.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vexa {

/// What a key does that is struck while another is held.
enum class PlayMode : int {
    /// It has a voice of its own.
    poly,
    /// It takes the voice over, and the key that is still held has it back; each with a new attack.
    mono,
    /// As mono, but the note goes on without a new attack.
    legato,
};

/// The values of one sound, in the table's units. Written by the window thread, read by all.
struct VEXA_REALTIME Playing {
    /// Makes a record with the values that the table gives for what a sound does not say.
    Playing();

    /// Counts the sounds that were loaded, and what else has hands and feet hold anew.
    kits::Shared<uint32> loads{0};
    /// True where anything says how the sound is played. Otherwise wheel, pedal, pressure and
    /// volume change nothing but the controllers' table.
    kits::Shared<bool> given{false};
    /// True where notes may have channels of their own (MPE) and bend on them, whatever the sound
    /// says.
    kits::Shared<bool> mpe{false};

    /// The polyphony is 0 where none is given: then the program has its own.
    kits::Shared<float> polyphony, mode, glide, bend, pedal, pressure, spread, oversample, smooth,
        volume;

    PlayMode Mode() const noexcept {
        return given ? static_cast<PlayMode>(int(float(mode))) : PlayMode::poly;
    }
    /// True where the wheel bends.
    bool Bends() const noexcept { return given || mpe; }
    bool Pedal() const noexcept { return given && pedal != 0; }
    /// Returns how far the ears are apart on the orbit, in degrees.
    double Spread() const noexcept { return given ? double(spread) : 0.0; }
    /// Returns the multiple of the rate at which the sound is computed: 1, 2, 4, 8 or 16.
    int Oversampling() const noexcept { return 1 << static_cast<int>(float(oversample)); }
    /// Returns the controller that pressure drives; -1 for none.
    int32 Pressure() const noexcept { return given ? static_cast<int32>(float(pressure)) : -1; }
};

/// The factor of each MIDI channel, by its controllers 7 and 11, on what its notes give. Written by
/// the MIDI thread, read by all.
struct ChannelVolumes : std::array<kits::Shared<float>, 16> {
    ChannelVolumes() { fill(1.0F); }
};

/// One of the values: its element in a sound document, its option, and what it may be.
struct PlayingRow {
    std::string_view name;
    double minimum, maximum;
    bool whole;
    /// The words that a document writes for the values. Where there are any the value is the number
    /// of one, and the range that of these numbers.
    std::span<const std::string_view> words;
    /// The value where none is given.
    float absent;
    kits::Shared<float> Playing::*target;
    /// The texts for the help of an option: what stands for the value, what the value may be, with
    /// its unit, and what it is for.
    const char* value;
    const char* allowed;
    const char* help;
    /// The programs take it as an option too.
    bool isOption;
};

constexpr std::size_t kPlayingRows = 10;

/// Returns the rows in the order of a document.
VEXA_REALTIME std::span<const PlayingRow, kPlayingRows> PlayingRows();

/// Returns the value that a text means; nothing where it is not wholly a value that the row allows.
/// Blanks around it do not count. The answer is the same in every locale.
std::optional<float> PlayingValue(const PlayingRow& row, const std::string& text);

} // namespace vexa
