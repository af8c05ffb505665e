// SPDX-License-Identifier: GPL-3.0-or-later
// Here is what a view tells those who cannot see it, and the programs that work for them.
#pragma once

#include "kits/support/Geometry.h"

#include <optional>
#include <string>

namespace kits {

/// The kind of thing that a view, or a part of one, is. Pane says no more than that there is a
/// view.
enum class AccessibleRole { Pane, Group, Picture, Chart, List, ListItem, Button, Slider, Meter };

/// A number that can be told, and set where it is not `fixed`.
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
    /// Its name in words that a person understands. A view's is empty where SetAccessibleName has
    /// given one.
    std::string name;
    /// Its present state in words, as in "0.25 s, 0.8".
    std::string description;
    std::optional<AccessibleNumber> number;
    /// Where a part is, in the coordinates of its view. A view's own is not used.
    BRect frame;
    /// True for a part that is the chosen one.
    bool chosen = false;
    /// The word for what Activate does, "Press" or "Load"; it is empty where that does nothing.
    std::string action;
};

} // namespace kits
