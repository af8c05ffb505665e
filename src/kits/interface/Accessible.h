// SPDX-License-Identifier: GPL-3.0-or-later
// The description of a view for users who cannot see it, and for the programs that work for them
// (screen readers).
#pragma once

#include "kits/support/Geometry.h"

#include <optional>
#include <string>

namespace kits {

/// The kind of a view or of a part of one. Pane is a view without further meaning, Text is one to
/// be read only.
enum class AccessibleRole {
    Pane,
    Group,
    Picture,
    Chart,
    List,
    ListItem,
    Button,
    Switch,
    Slider,
    Meter,
    Text
};

/// A number that a screen reader can read, and set unless `fixed` is true.
struct AccessibleNumber {
    double value = 0;
    double least = 0;
    double most = 0;
    double step = 0;
    bool fixed = false;
};

/// A view as a whole, or one of the parts that it draws itself: a row, a point, a key.
struct AccessibleThing {
    AccessibleRole role = AccessibleRole::Pane;
    /// The name in words that the user understands. It is empty for a view that has its name from
    /// SetAccessibleName.
    std::string name;
    /// The present state in words, for example "0.25 s, 0.8".
    std::string description;
    std::optional<AccessibleNumber> number;
    /// The place of a part in the coordinates of its view. It is not used for a view as a whole.
    BRect frame;
    /// The state of a switch.
    bool on = false;
    /// True for the chosen part.
    bool chosen = false;
    /// The word for the effect of Activate, such as "Press" or "Load"; empty if Activate does
    /// nothing.
    std::string action;
};

} // namespace kits
