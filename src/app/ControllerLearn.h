// SPDX-License-Identifier: GPL-3.0-or-later
// This finds which controller a person moves.
#pragma once

#include "synth/SoundParam.h"

#include <array>
#include <optional>

namespace vexa {

/// Compares the controllers with how they were when it was made. Window thread.
class ControllerLearn {
  public:
    /// Begins: what moves from now on counts.
    explicit ControllerLearn(const ControllerTable& controllers);

    /// The number of the controller that has moved furthest since, by more than a jitter of the
    /// hand; nothing while none has.
    std::optional<int> Moved() const;

  private:
    const ControllerTable* controllers;
    std::array<float, std::tuple_size_v<ControllerTable>> before;
};

} // namespace vexa
