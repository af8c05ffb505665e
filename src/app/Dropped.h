// SPDX-License-Identifier: GPL-3.0-or-later
// Sorts several files that are dropped at once by what each is to become.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace vexa {

/// The first usable file of each kind. A terrain is a function, a sample or a picture.
struct DroppedFiles {
    std::optional<std::filesystem::path> sound;
    std::optional<std::filesystem::path> terrain;
    /// Scala files, which are recognised by their extensions ".scl" and ".kbm".
    std::optional<std::filesystem::path> scale;
    std::optional<std::filesystem::path> keymap;
    /// All usable files but the first of each kind.
    std::vector<std::filesystem::path> others;
    /// The files that cannot be opened as anything.
    std::vector<std::filesystem::path> unusable;
};

/// Sorts the files. The function or picture that becomes the terrain has been read as a whole; of
/// other files only as much is read as their kind requires. A file alone counts as usable, so that
/// opening it tells what is wrong with it.
DroppedFiles SortDropped(std::span<const std::filesystem::path> files);

/// Returns the extension in lower case (ASCII letters only), with its dot.
std::string EndingOf(const std::filesystem::path& file);

} // namespace vexa
