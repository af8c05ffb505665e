// SPDX-License-Identifier: GPL-3.0-or-later
// The alerts that report failures.
#pragma once

#include "kits/support/Result.h"

#include <string>

namespace vexa {

// Window thread.

/// Shows a modal stop alert titled "Error" with the button "Ok", and waits for the answer.
/// `details`, if not empty, gives the reason.
void ErrorAlert(const std::string& text, const std::string& details = "");
/// Shows the same alert without waiting, for what must go on without a user. `heading`, if not
/// empty, says before the text what it means to the user.
void ShowErrorAlert(const std::string& text, const std::string& details = "",
                    const std::string& heading = "");
/// Prints the error (see Print), then shows each of its alerts as ErrorAlert does, the last with
/// the rest of the error's text as details and with `heading`. An error without alerts shows its
/// text.
void ShowError(const kits::Error& error, const std::string& heading = "");
/// Prints the error's text, if any, as a line on standard error.
void Print(const kits::Error& error);

} // namespace vexa
