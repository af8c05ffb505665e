// SPDX-License-Identifier: GPL-3.0-or-later
// The name by which a host identifies a note.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

namespace vexa {

/// The name of a note. As a pattern it matches every note with the same fields; -1 matches any
/// value.
struct NoteName {
    /// The host's note id, -1 for none. MIDI notes have kOfMidi.
    int32 id = -1;
    /// The channel, 0..15, or -1 for any.
    int32 channel = -1;
    /// The key, 0..127, or -1 for any.
    int32 key = -1;

    static constexpr int32 kOfMidi = -2;

    VEXA_REALTIME bool Fits(const NoteName& pattern) const noexcept {
        const auto agrees = [](int32 own, int32 wanted) { return wanted == -1 || own == wanted; };
        return agrees(id, pattern.id) && agrees(channel, pattern.channel) &&
               agrees(key, pattern.key);
    }
    bool operator==(const NoteName&) const = default;
};

/// The values, besides macros, that a host sets for a single note.
enum class Expression {
    /// The note's tuning in semitones.
    Tuning,
    /// Gains of at least 0; the two are multiplied.
    Volume,
    Loudness,
    /// The pan: 0 is left, 0.5 the middle, 1 right.
    Pan,
    /// From 0 to 1, with the effect of pressure and controller 74 on an MPE member channel.
    Pressure,
    Timbre,
};

} // namespace vexa
