// SPDX-License-Identifier: GPL-3.0-or-later
// The four numbers of a sound that its formula calls a, b, c and d.
#pragma once

#include "kits/support/Shared.h"
#include "kits/support/SupportDefs.h"

#include <array>
#include <cstddef>

namespace vexa {

constexpr std::size_t kMacros = 4;
/// The value of a macro before anybody has set it, and the MIDI controller of the first one.
constexpr float kInitialMacro = 0.5F;
constexpr int32 kFirstMacroController = 16;

/// One macro. Any thread may read it.
struct Macro {
    /// Where it is to be, 0..1. Written by the window and the MIDI thread.
    kits::Shared<float> value{kInitialMacro};
    /// The controller that moves it, 0..127. Written by the window thread.
    kits::Shared<int32> controller;
    /// Where it is on its way to `value`, which takes it 10 ms. Written by the media thread.
    kits::Shared<float> now{kInitialMacro};
};

/// In the order of their letters.
struct Macros : std::array<Macro, kMacros> {
    Macros() {
        for (std::size_t i = 0; i < size(); i++)
            (*this)[i].controller = kFirstMacroController + static_cast<int32>(i);
    }
};

} // namespace vexa
