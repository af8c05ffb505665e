// SPDX-License-Identifier: GPL-3.0-or-later
// Enters the controller that the user moves into a field for its number.
#pragma once

#include "app/ControllerLearn.h"
#include "app/FieldId.h"

#include <optional>

namespace vexa {

class FieldSet;

/// While the field of a controller number has the keyboard focus, takes the controller that moves.
/// Window thread.
class FieldLearn {
  public:
    /// To be called at each pulse, always with the same controllers, which outlive the object.
    void Pulse(FieldSet& fields, const ControllerTable& controllers);

  private:
    /// The controller field that has the keyboard focus, and the controllers at the moment when it
    /// got it.
    struct Learning {
        FieldId field;
        ControllerLearn from;
    };
    std::optional<Learning> learning;
};

} // namespace vexa
