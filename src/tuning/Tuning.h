// SPDX-License-Identifier: GPL-3.0-or-later
// A tuning assigns a frequency to each key.
#pragma once

#include <array>

namespace vexa {

/// The number of MIDI keys, 0..127.
constexpr int kKeys = 128;
/// The A above the middle C, and its usual frequency in Hz.
constexpr int kA4 = 69;
constexpr double kA4Hertz = 440;

/// The range of frequencies (Hz) of keys that sound. Below it, single precision cannot distinguish
/// the low-cut filter's poles from 1; above it nothing is audible.
constexpr double kLeastHertz = 0.1;
constexpr double kMostHertz = 100000;

/// The frequency of each key in Hz; 0 for a silent key.
using Tuning = std::array<float, kKeys>;

/// Returns twelve equal steps to the octave, with key 69 at `a4` Hz.
Tuning EqualTemperament(double a4 = kA4Hertz);

struct Scale;
struct Keymap;

/// Returns the tuning of the map's keys to the scale.
Tuning TuningOf(const Scale& scale, const Keymap& keymap);

} // namespace vexa
