// SPDX-License-Identifier: GPL-3.0-or-later
// Controllers of which a note may have values of its own.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "synth/Macros.h"
#include "synth/Playing.h"

#include <array>
#include <cstddef>

namespace vexa {

/// The one that pressure drives, the one of the third dimension of MPE, and those of the macros.
enum : std::size_t { kOwnPressure, kOwnTimbre, kOwnMacros, kOwnControllers = kOwnMacros + kMacros };
constexpr int32 kTimbreNumber = 74;

/// A note's own values, 0..1; below 0 where it has none.
using OwnValues = std::array<float, kOwnControllers>;
constexpr OwnValues kNoOwnValues{-1, -1, -1, -1, -1, -1};

/// The numbers of the controllers that a note may have for itself; -1 where there is none.
struct VEXA_REALTIME OwnControllers {
    VEXA_REALTIME OwnControllers(const Playing& playing, const Macros& macros) noexcept
        : numbers{playing.Pressure(),   kTimbreNumber,        macros[0].controller,
                  macros[1].controller, macros[2].controller, macros[3].controller} {}

    /// Returns which of them a controller is, the first one where it is several; kOwnControllers if
    /// none.
    std::size_t Which(int32 number) const noexcept {
        std::size_t i = 0;
        while (i < kOwnControllers && number != numbers[i])
            i++;
        return i;
    }
    /// The value of a controller for a note; `common` where it has none of its own.
    double Of(int32 number, const OwnValues& values, double common) const noexcept {
        const std::size_t which = Which(number);
        return which < kOwnControllers && values[which] >= 0 ? values[which] : common;
    }
    /// Returns what a note has of a macro for itself: what a host gave it, or else the value of the
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
