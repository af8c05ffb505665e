// SPDX-License-Identifier: GPL-3.0-or-later
// The four numbers of a sound that its formula calls a, b, c and d.
#pragma once

#include "kits/support/RealtimeMark.h"
#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vexa {

constexpr std::size_t kMacros = 4;
/// The value of a macro before anybody has set it, and the MIDI controller of the first one.
constexpr float kInitialMacro = 0.5F;
constexpr int32 kFirstMacroController = 16;

/// The record of one macro. Any thread may read it.
struct Macro {
    /// The target value, 0..1. Written by the window and the MIDI thread.
    kits::Shared<float> value{kInitialMacro};
    /// The host's modulation, which is added to the value, -1..1; the sum is clamped to 0..1.
    /// Written by the MIDI thread.
    kits::Shared<float> modulation{0};
    /// The controller that moves it, 0..127. Written by the window thread.
    kits::Shared<int32> controller;
    /// The value in use, which reaches the target in 10 ms. Written by the media thread.
    kits::Shared<float> now{kInitialMacro};
};

/// A note's own value and modulation of a macro, which replace the common ones. The alignment makes
/// the record a lock-free atomic with every compiler.
struct alignas(8) OwnMacro {
    /// Below 0 if the note has none.
    float value = -1;
    /// Below -1 if the note has none.
    float modulation = -2;

    VEXA_REALTIME bool Given() const noexcept { return value >= 0 || modulation >= -1; }
    bool operator==(const OwnMacro&) const = default;
};
using OwnMacros = std::array<OwnMacro, kMacros>;

/// Returns the target value of a macro for a note, 0..1. Any thread.
VEXA_REALTIME inline float Wanted(const Macro& macro, const OwnMacro& own = {}) noexcept {
    const float value = own.value >= 0 ? own.value : float(macro.value);
    return std::clamp(value + (own.modulation >= -1 ? own.modulation : float(macro.modulation)),
                      0.0F, 1.0F);
}

/// The macros in the order of their letters.
struct Macros : std::array<Macro, kMacros> {
    Macros() {
        for (std::size_t i = 0; i < size(); i++)
            (*this)[i].controller = kFirstMacroController + static_cast<int32>(i);
    }
};

} // namespace vexa
