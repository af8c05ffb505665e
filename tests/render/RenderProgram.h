// SPDX-License-Identifier: GPL-3.0-or-later
// The program that a user runs.
#pragma once

#include <string>

namespace test {

inline const std::string kProgram = VEXA_PROGRAM_FOLDER "/vexa-render";

} // namespace test
