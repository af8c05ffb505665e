// SPDX-License-Identifier: GPL-3.0-or-later
// A tuning says which frequency each key has.
#pragma once

#include <array>

namespace vexa {

/// MIDI has so many keys, 0..127.
constexpr int kKeys = 128;
/// The A above the middle C, and its usual frequency in Hz.
constexpr int kA4 = 69;
constexpr double kA4Hertz = 440;

/// A key with a frequency (Hz) outside of these sounds nothing: below, single precision no longer
/// holds the low-cut filter's poles apart from 1; above there is nothing to hear.
constexpr double kLeastHertz = 0.1;
constexpr double kMostHertz = 100000;

/// The frequency of each key in Hz; 0 for a key that sounds nothing.
using Tuning = std::array<float, kKeys>;

/// Returns twelve equal steps to the octave, with key 69 at `a4` Hz.
Tuning EqualTemperament(double a4 = kA4Hertz);

struct Scale;
struct Keymap;

/// Returns the keys of the map tuned to the scale.
Tuning TuningOf(const Scale& scale, const Keymap& keymap);

} // namespace vexa
