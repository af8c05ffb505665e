// SPDX-License-Identifier: GPL-3.0-or-later
// Which controller a person moves.
#pragma once

#include "synth/SoundParam.h"

#include <array>
#include <optional>

namespace vexa {

/// Watches the controllers from a moment on. Window thread.
class ControllerLearn {
  public:
    explicit ControllerLearn(const ControllerTable& controllers) : controllers(controllers) {
        for (std::size_t i = 0; i < before.size(); i++)
            before[i] = controllers[i];
    }

    /// The number of one that has moved since; nothing while none has.
    std::optional<int32> Moved() const {
        for (std::size_t i = 0; i < before.size(); i++) {
            if (controllers[i] != before[i])
                return static_cast<int32>(i);
        }
        return std::nullopt;
    }

  private:
    const ControllerTable& controllers;
    std::array<float, 128> before{};
};

} // namespace vexa
