// SPDX-License-Identifier: GPL-3.0-or-later
// Detects texts whose value as a number is probably not the intended one.
#pragma once

#include <optional>
#include <string>

namespace vexa {

/// The alert for a controller number outside 0..127.
constexpr const char* kInvalidController = "Controller number must be between 0 and 127.";

/// Returns one line about what is odd in a text that should be a float, or a controller number if
/// `controller` is true, and about the value it counts as. Returns "" if the whole text is a valid
/// number; surrounding blanks are ignored. Any thread.
std::string NumberDoubt(const std::string& text, bool controller);

/// Does the same for a frequency in Hz, which must be above 0; any other text is not used.
std::string FrequencyDoubt(const std::string& text);

/// Returns the width of the shown part of the plane that the text gives; nothing if it is not above
/// 0 or not finite. Any thread.
std::optional<float> WidthIn(const std::string& text);
/// Does the same as NumberDoubt for such a width.
std::string WidthDoubt(const std::string& text);

} // namespace vexa
