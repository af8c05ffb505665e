// SPDX-License-Identifier: GPL-3.0-or-later
// The text of the About box, the list of linked libraries, and the place of the manual.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace vexa {

/// Returns the program's name, version and licence.
std::string AboutText();

/// A library that is linked, and its licence.
struct LinkedLibrary {
    const char* name;
    const char* licence;
};
std::span<const LinkedLibrary> LinkedLibraries();
/// Returns a heading and a line for each library, with its name and licence.
std::string LibrariesText();

/// Returns the first page of the manual: of the installation, or else of the source tree in which
/// the program was built. Returns nothing if neither exists.
std::optional<std::filesystem::path> FindManual();

} // namespace vexa
