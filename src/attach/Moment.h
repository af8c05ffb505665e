// SPDX-License-Identifier: GPL-3.0-or-later
// The state of an instrument's notes that is sent to a window in another process.
#pragma once

#include "kits/support/SupportDefs.h"
#include "synth/SoundRecords.h"

#include <array>
#include <string_view>

namespace vexa::attach {

/// One slot of the voice table, with the fields that views need; see synth/Voice.h for the units.
struct VoiceMoment {
    int32 active;
    /// 0 while the key is held, 1 after the release, 2 once the note is over.
    int32 released;
    int32 channel;
    /// Not 0 if the rendered state of the note is known, including `sums`.
    int32 rendered;
    uint32 notes;
    float freq, pitch, vel, key, heldfor;
    std::array<float, 4> rellevel;
    std::array<float, kOwnControllers> own;
    double t, phasex, phasey, cx, cy;
    OrbitSums sums;

    bool operator==(const VoiceMoment&) const = default;
};

/// All voices, controllers and macros at one moment, and what a host sets in place of the sound.
/// Sent over the wire as it is in memory.
struct Moment {
    std::array<VoiceMoment, kVoiceSlots> voices;
    std::array<float, 128> controllers;
    std::array<float, kMacros> macros;
    /// The settings of playing and the macros that a host sets: a bit for each, by its row of
    /// PlayingRows() or its place in `macros`. The settings have their values in `playing`, whose
    /// other elements are 0. MomentOf knows of no host and leaves all three 0.
    uint32 hostsPlaying, hostsMacros;
    std::array<float, kPlayingRows> playing;

    bool operator==(const Moment&) const = default;
};

/// Reads the body of a letter of the kind Moment.
Moment ReadMoment(std::string_view body);

/// Reads the state of a playing instrument, without waiting for other threads. Any thread.
Moment MomentOf(const SoundRecords& records);

/// Writes the state of another instrument into records that no engine plays. Velocities, keys,
/// controllers and macros outside 0..1 become 0, and a frequency or pitch that is not positive
/// becomes 1. Everything else is copied: the window draws any place of a voice. What a host sets is
/// not looked at. Window thread, in place of the MIDI and the media thread.
void Show(const Moment& moment, SoundRecords& records);

} // namespace vexa::attach
