// SPDX-License-Identifier: GPL-3.0-or-later
// Controllers of which a note may have values of its own.
#pragma once

#include "synth/Playing.h"

#include <array>
#include <cstddef>

namespace vexa {

/// The one that pressure drives, and the one of the third dimension of MPE.
enum : std::size_t { kOwnPressure, kOwnTimbre, kOwnControllers };
constexpr int32 kTimbreNumber = 74;

/// A note's own values, 0..1; below 0 where it has none.
using OwnValues = std::array<float, kOwnControllers>;
constexpr OwnValues kNoOwnValues{-1, -1};

/// Their numbers; -1 where there is none.
struct OwnControllers {
    explicit OwnControllers(const Playing& playing) noexcept
        : numbers{playing.Pressure(), kTimbreNumber} {}

    /// The value of a controller for a note; `common` where it has none of its own.
    double Of(int32 number, const OwnValues& values, double common) const noexcept {
        const std::size_t which = Which(number, values);
        return which < kOwnControllers && values[which] >= 0 ? values[which] : common;
    }

    /// Which of them a controller is for a note: the one of pressure, as a key may be pressed at
    /// any moment, or another that the note has a value of; kOwnControllers if none.
    std::size_t Which(int32 number, const OwnValues& values) const noexcept {
        std::size_t i = 0;
        while (i < kOwnControllers &&
               (number != numbers[i] || (i != kOwnPressure && values[i] < 0)))
            i++;
        return i;
    }

    std::array<int32, kOwnControllers> numbers;
};

} // namespace vexa
