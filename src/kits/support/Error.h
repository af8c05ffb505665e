// SPDX-License-Identifier: GPL-3.0-or-later
// A fault, as one value that every part of the program makes, passes on and shows.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace kits {

/// Where in a file a fault lies.
struct Place {
    /// The path of the file, or the name of another text that was read; empty for no place.
    std::string file{};
    /// The line, and the character within it, both counted from 1; 0 if not known.
    std::size_t line = 0;
    std::size_t column = 0;

    bool operator==(const Place&) const = default;
};

/// A fault, written for the person who has to act on it. The code that finds the fault fills this
/// in. The code that shows it takes the part that fits: the window its alerts, with the text as
/// their details; programs, a plug-in's log and a row of the sound list the text alone.
struct Error {
    /// What is wrong and with which file, complete in itself: "FILE:LINE:COLUMN: FAULT" where the
    /// fault has a place.
    std::string text{};
    /// The texts of the window's alerts, one for each, in their order. If there are none, one alert
    /// shows the text.
    std::vector<std::string> alerts{};
    /// The place with which the text begins. See At.
    Place place{};
};

/// Returns the same error at a place: with "FILE:LINE:COLUMN: " before its text.
Error At(Place place, Error error);

/// Returns the texts of the errors, in their order.
std::vector<std::string> Texts(std::span<const Error> errors);

} // namespace kits
