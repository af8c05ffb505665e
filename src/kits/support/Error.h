// SPDX-License-Identifier: GPL-3.0-or-later
// What went wrong, as one value that every part of the program makes, passes on and shows.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace kits {

/// Where in a file a fault lies.
struct Place {
    /// The path of the file, or what else the text is called that was read; empty for no place.
    std::string file{};
    /// The line from 1, and the character in it from 1; 0 where nothing narrower is known.
    std::size_t line = 0;
    std::size_t column = 0;

    bool operator==(const Place&) const = default;
};

/// A fault, written for the person who has to act on it. Whoever finds the fault fills this in,
/// and whoever has to show it takes the part that fits: the window its alerts, with the text as
/// their details; programs, a plug-in's log and a row of the sound list the text alone.
struct Error {
    /// What is wrong and with which file, complete in itself: "FILE:LINE:COLUMN: FAULT" where the
    /// fault has a place.
    std::string text{};
    /// What the window's alerts say, an alert each, in their order. Where there are none the text
    /// is what an alert says.
    std::vector<std::string> alerts{};
    /// The place with which the text begins. See At.
    Place place{};
};

/// The same error at a place: its text is the old one with "FILE:LINE:COLUMN: " before it.
Error At(Place place, Error error);

/// What the errors say, in their order.
std::vector<std::string> Texts(std::span<const Error> errors);

} // namespace kits
