// SPDX-License-Identifier: GPL-3.0-or-later
// The settings that say how a sound is played: voices, bend, pedal and the player's other means of
// expression.
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

/// The effect of a key that is struck while another is held.
enum class PlayMode : int {
    /// The key gets a voice of its own.
    poly,
    /// The key takes over the one voice. When it is released, the key that is still held gets the
    /// voice back. Each change starts a new attack.
    mono,
    /// Like mono, but the note continues without a new attack.
    legato,
};

/// The settings of one sound, in the units of PlayingRows(). Written by the window thread, read by
/// all.
struct VEXA_REALTIME Playing {
    /// Makes a record with the default value of each row.
    Playing();

    /// Counts the loaded sounds and the other events after which the player's controls are taken
    /// afresh.
    kits::Shared<uint32> loads{0};
    /// True if the sound or an option contains any of these settings. Otherwise wheel, pedal,
    /// pressure and volume change only the controller table.
    kits::Shared<bool> given{false};
    /// True if notes may have channels of their own (MPE) and bend on them, regardless of the
    /// sound's settings.
    kits::Shared<bool> mpe{false};

    /// A polyphony of 0 means that none is given; the program then uses its own.
    kits::Shared<float> polyphony, mode, glide, bend, pedal, pressure, spread, oversample, smooth,
        volume;

    PlayMode Mode() const noexcept {
        return given ? static_cast<PlayMode>(int(float(mode))) : PlayMode::poly;
    }
    /// True if the pitch wheel bends notes.
    bool Bends() const noexcept { return given || mpe; }
    bool Pedal() const noexcept { return given && pedal != 0; }
    /// Returns the distance between the two ears on the orbit, in degrees.
    double Spread() const noexcept { return given ? double(spread) : 0.0; }
    /// Returns the oversampling factor: 1, 2, 4, 8 or 16.
    int Oversampling() const noexcept { return 1 << static_cast<int>(float(oversample)); }
    /// Returns the controller that pressure drives; -1 for none.
    int32 Pressure() const noexcept { return given ? static_cast<int32>(float(pressure)) : -1; }
};

/// The gain of each MIDI channel's notes, as its controllers 7 and 11 set it. Written by the MIDI
/// thread, read by all.
struct ChannelVolumes : std::array<kits::Shared<float>, 16> {
    ChannelVolumes() { fill(1.0F); }
};

/// One of the settings: its element in a sound document, its option, and its valid values.
struct PlayingRow {
    std::string_view name;
    double minimum, maximum;
    bool whole;
    /// The words that a document uses for the values. If there are any, the value is the index of a
    /// word, and the range is that of the indices.
    std::span<const std::string_view> words;
    /// The default value.
    float absent;
    kits::Shared<float> Playing::*target;
    /// The texts for an option's help: the placeholder of the value, the valid values with their
    /// unit, and the purpose.
    const char* value;
    const char* allowed;
    const char* help;
    /// True if the programs accept the setting as an option too.
    bool isOption;
};

constexpr std::size_t kPlayingRows = 10;

/// Returns the rows in the order of their elements in a document.
VEXA_REALTIME std::span<const PlayingRow, kPlayingRows> PlayingRows();
/// Returns the row with that name, which must be one of them.
const PlayingRow& PlayingRowNamed(std::string_view name);

/// Parses `text` as a value of the row. Returns nothing if the text is anything but one valid
/// value. Surrounding blanks are ignored. The result does not depend on the locale.
std::optional<float> PlayingValue(const PlayingRow& row, const std::string& text);

} // namespace vexa
