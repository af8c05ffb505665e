// SPDX-License-Identifier: GPL-3.0-or-later
// This is the name by which a host calls a note.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/SupportDefs.h"

namespace vexa {

/// The name of a note, which as a pattern means every note that it agrees with; -1 agrees with any.
struct NoteName {
    /// The host's own number, -1 where it gives none. Notes of MIDI have kOfMidi.
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

/// The things that a host says of a note alone, besides its macros.
enum class Expression {
    /// The note's tuning in semitones.
    Tuning,
    /// Factors from 0 on; the two are multiplied.
    Volume,
    Loudness,
    /// The place between left, 0, middle, 0.5, and right, 1.
    Pan,
    /// From 0 to 1, with the effect that the pressure and the controller 74 of a channel of the
    /// note's own (MPE) have.
    Pressure,
    Timbre,
};

} // namespace vexa
