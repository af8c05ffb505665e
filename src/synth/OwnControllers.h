// SPDX-License-Identifier: GPL-3.0-or-later
// The controllers that a single note may override with its own values (MPE, plug-in hosts).
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Macros.h"
#include "synth/Playing.h"

#include <array>
#include <cstddef>

namespace vexa {

/// Indices: the controller that pressure drives, MPE's third dimension (timbre), and the
/// controllers of the macros.
enum : std::size_t { kOwnPressure, kOwnTimbre, kOwnMacros, kOwnControllers = kOwnMacros + kMacros };
constexpr int32 kTimbreNumber = 74;

/// A note's own values, 0..1; below 0 if it has none.
using OwnValues = std::array<float, kOwnControllers>;
constexpr OwnValues kNoOwnValues{-1, -1, -1, -1, -1, -1};

/// The MIDI numbers of these controllers; -1 for none.
struct VEXA_REALTIME OwnControllers {
    VEXA_REALTIME OwnControllers(const Playing& playing, const Macros& macros) noexcept
        : numbers{playing.Pressure(),   kTimbreNumber,        macros[0].controller,
                  macros[1].controller, macros[2].controller, macros[3].controller} {}

    /// Returns the first index whose controller is `number`; kOwnControllers if there is none.
    std::size_t Which(int32 number) const noexcept {
        std::size_t i = 0;
        while (i < kOwnControllers && number != numbers[i])
            i++;
        return i;
    }
    /// Returns the value of a controller for a note; `common` if the note has none of its own.
    double Of(int32 number, const OwnValues& values, double common) const noexcept {
        const std::size_t which = Which(number);
        return which < kOwnControllers && values[which] >= 0 ? values[which] : common;
    }
    /// Returns a note's own part of a macro: the host's value, or else the note's value of the
    /// macro's controller.
    OwnMacro OfMacro(std::size_t macro, const OwnValues& values,
                     const OwnMacros& macros) const noexcept {
        OwnMacro own = macros[macro];
        if (own.value < 0)
            own.value = static_cast<float>(Of(numbers[kOwnMacros + macro], values, -1));
        return own;
    }

    std::array<int32, kOwnControllers> numbers;
};

} // namespace vexa
