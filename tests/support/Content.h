// SPDX-License-Identifier: GPL-3.0-or-later
// The content that comes with the program.
#pragma once

#include <filesystem>

namespace test {

/// Copies functions, sounds and samples into a folder, from where nothing changes while tests run:
/// in the program folder others may compile.
inline void CopyContent(const std::filesystem::path& folder) {
    using std::filesystem::copy;
    const std::filesystem::path data = std::filesystem::path(VEXA_SOURCE_FOLDER) / "data";
    copy(data / "functions", folder / "functions");
    copy(data / "sounds", folder / "sounds");
    copy(std::filesystem::path(VEXA_PROGRAM_FOLDER) / "samples", folder / "samples");
}

} // namespace test
