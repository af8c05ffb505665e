// SPDX-License-Identifier: GPL-3.0-or-later
// This decides what several files that are dropped at once are to become.
#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace vexa {

/// The first of each kind; a function, a sample or a picture is a terrain.
struct DroppedFiles {
    std::optional<std::filesystem::path> sound;
    std::optional<std::filesystem::path> terrain;
    /// The Scala files, which are known by their endings ".scl" and ".kbm".
    std::optional<std::filesystem::path> scale;
    std::optional<std::filesystem::path> keymap;
    /// The further ones.
    std::vector<std::filesystem::path> others;
};

/// Reads as much of the files as tells their kind.
DroppedFiles SortDropped(std::span<const std::filesystem::path> files);

/// Returns the ending in small letters, with its dot.
std::string EndingOf(const std::filesystem::path& file);

} // namespace vexa
