// SPDX-License-Identifier: GPL-3.0-or-later
// A moment is what a window sees of the notes that an instrument plays elsewhere.
#pragma once

#include "kits/support/SupportDefs.h"
#include "synth/SoundRecords.h"

#include <array>
#include <string_view>

namespace vexa::attach {

/// One slot of the voice table, as a view of it needs it; see synth/Voice.h for the units.
struct VoiceMoment {
    int32 active, released, channel;
    /// Not 0 where what is rendered of the note is known, `sums` among it.
    int32 rendered;
    uint32 notes;
    float freq, pitch, vel, key, heldfor;
    std::array<float, 4> rellevel;
    std::array<float, kOwnControllers> own;
    double t, phasex, phasey, cx, cy;
    OrbitSums sums;

    bool operator==(const VoiceMoment&) const = default;
};

/// All voices, controllers and macros at one moment. It goes over the wire as it is.
struct Moment {
    std::array<VoiceMoment, kVoiceSlots> voices;
    std::array<float, 128> controllers;
    std::array<float, kMacros> macros;

    bool operator==(const Moment&) const = default;
};

/// Reads the body of a letter of the kind Moment.
Moment ReadMoment(std::string_view body);

/// Reads what plays, without waiting for anybody. Any thread.
Moment MomentOf(const SoundRecords& records);

/// Makes records that nobody plays show what another instrument plays. What is no number, or beyond
/// its range, counts as 0. Window thread, in the place of the MIDI and the media thread.
void Show(const Moment& moment, SoundRecords& records);

} // namespace vexa::attach
