// SPDX-License-Identifier: GPL-3.0-or-later
// The numbers that the MIDI 1.0 standard gives to controllers and parameters, those that this
// program knows.
#pragma once

#include "kits/support/SupportDefs.h"

namespace kits {

enum ControllerNumber : uint8 {
    kBankMsb = 0,
    kModulation = 1,
    kDataMsb = 6,
    kVolume = 7,
    kExpression = 11,
    kBankLsb = 32,
    kDataLsb = 38,
    kSustain = 64,
    kSostenuto = 66,
    /// The soft pedal, the last of the pedals, which are down from a value of 64 on.
    kLastPedal = 67,
    /// Step the selected parameter up and down.
    kIncrement = 96,
    kDecrement = 97,
    /// The numbers of the non-registered and of the registered parameters.
    kOtherLsb = 98,
    kOtherMsb = 99,
    kParameterLsb = 100,
    kParameterMsb = 101,
    kAllSoundOff = 120,
    /// Resets all controllers.
    kResetControllers = 121,
    /// The mode messages that follow, up to 127, also mean this.
    kAllNotesOff = 123,
};

/// The least significant bytes of registered parameters whose most significant byte is 0: the range
/// of the bend wheel, and the number of members of an MPE zone.
enum RegisteredParameter : uint8 { kRangeParameter = 0, kZoneParameter = 6 };

} // namespace kits
