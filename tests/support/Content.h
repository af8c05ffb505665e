// SPDX-License-Identifier: GPL-3.0-or-later
// The content that is shipped with the program.
#pragma once

#include <filesystem>

namespace test {

/// Copies functions, sounds, samples and pictures, with their list, into a folder. Nothing changes
/// there while tests run, whereas in the program folder other tests may compile.
inline void CopyContent(const std::filesystem::path& folder) {
    using std::filesystem::copy;
    const std::filesystem::path data = std::filesystem::path(VEXA_SOURCE_FOLDER) / "data";
    copy(data / "functions", folder / "functions");
    copy(data / "sounds", folder / "sounds");
    copy(data / "shipped-content", folder / "shipped-content");
    for (const char* made : {"samples", "pictures"})
        copy(std::filesystem::path(VEXA_PROGRAM_FOLDER) / made, folder / made);
}

} // namespace test
