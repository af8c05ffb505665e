// SPDX-License-Identifier: GPL-3.0-or-later
// This is what the program says of itself, and where its manual is.
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
/// Returns a line for each of the libraries.
std::string LibrariesText();

/// The first page of the manual: of the installation, or of the source tree that the program was
/// built in. Nothing where there is neither.
std::optional<std::filesystem::path> FindManual();

} // namespace vexa
