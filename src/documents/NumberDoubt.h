// SPDX-License-Identifier: GPL-3.0-or-later
// Tells whether a person can have meant what a text means as a number.
#pragma once

#include <string>

namespace vexa {

/// The alert for a controller's number outside 0..127.
constexpr const char* kInvalidController = "Controller number must be between 0 and 127.";

/// Returns what is odd about a text that is to be a float, or the number of a controller, and what
/// it counts as, in one line; empty for a text that is a number as a whole. Any thread.
std::string NumberDoubt(const std::string& text, bool controller);

} // namespace vexa
