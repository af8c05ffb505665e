// SPDX-License-Identifier: GPL-3.0-or-later
// What a view tells those who cannot see it, and programs that work for them.
#pragma once

#include "kits/support/Geometry.h"

#include <optional>
#include <string>

namespace kits {

/// What a view, or a part of it, is. Pane says no more than that there is a view.
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
    /// In words that a person understands; of a view empty where SetAccessibleName has said it.
    std::string name;
    /// What it is at present, in words: "0.25 s, 0.8".
    std::string description;
    std::optional<AccessibleNumber> number;
    /// Of a part: where it is, in the view's coordinates.
    BRect frame;
    /// Of a part: it is the chosen one.
    bool chosen = false;
    /// What Activate does, in one word, "Press" or "Load"; empty where it does nothing.
    std::string action;
};

} // namespace kits
