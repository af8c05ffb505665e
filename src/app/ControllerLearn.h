// SPDX-License-Identifier: GPL-3.0-or-later
// Detects which controller the user moves.
#pragma once

#include "synth/SoundParam.h"

#include <array>
#include <optional>

namespace vexa {

/// Compares the controllers with their values at construction. Window thread.
class ControllerLearn {
  public:
    /// Takes the present values as the reference. `controllers` outlives the object.
    explicit ControllerLearn(const ControllerTable& controllers);

    /// Returns the number of the controller that has moved furthest since construction; nothing
    /// while no movement exceeds jitter.
    std::optional<int> Moved() const;

  private:
    const ControllerTable* controllers;
    std::array<float, std::tuple_size_v<ControllerTable>> before;
};

} // namespace vexa
