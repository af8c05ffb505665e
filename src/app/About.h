// SPDX-License-Identifier: GPL-3.0-or-later
// What the program says of itself, and where its manual is.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace vexa {

/// Name, version and licence.
std::string AboutText();

/// What is linked, and under which licence.
struct LinkedLibrary {
    const char* name;
    const char* licence;
};
std::span<const LinkedLibrary> LinkedLibraries();
/// A line for each of them.
std::string LibrariesText();

/// The first page of the manual: of the installation, or of the source tree that the program was
/// built in. Nothing where there is neither.
std::optional<std::filesystem::path> FindManual();

} // namespace vexa
